data items of report Deliveries_late
+ qLate
  + dimension carrier
    - Polar Freight
