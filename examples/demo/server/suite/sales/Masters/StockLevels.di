data items of report StockLevels
+ qStock
  + dimension item
    - AC-1010  Commuter Light Set
    - AC-1040  City Frame 54 cm
    - FW-2210  Touring Wheel 28"
    - FW-2230  Rain Cape, yellow
    - FW-3300  Cargo Rack 27 kg
    - FW-3310  Gravel Wheel 700C
    - WT-4105  Chain Whip Pro
    - WT-4120  Spoke 262 mm, black
    - WT-4175  Bottom Bracket Tool
    - WT-5010  Chain Oil 100 ml
    - WT-5044  Torque Key 5 Nm
    - BI-6080  Winter Gloves
    - BI-6301  City Bike N8, step-through
    - WT-7200  Frame Stand, folding
  + dimension warehouse
    - Oslo
    - München
    - Chicago
    - Melbourne
  + measures
    - onHand      sum  integer
    - reserved    sum  integer
    - available   sum  integer  onHand - reserved
    - reorderLevel      integer
