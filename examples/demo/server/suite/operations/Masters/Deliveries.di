data items of report Deliveries
+ qDeliveries
  + dimension carrier
    - Polar Freight
    - TransAlp
    - Lakeline
    - Iberlog
    - Southern Star
    - Shinano Parcel
    - Ontario Cargo
  + dimension dueDate
    - 2024-03-25
    - 2024-03-26
    - 2024-03-27
    - 2024-03-28
    - 2024-03-29
  + measures
    - packages  sum  integer
    - weight    sum  decimal(9,1)
