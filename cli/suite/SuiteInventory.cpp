#include "cli/suite/SuiteInventory.h"

#include "cli/suite/MasterInventory.h"
#include "cli/suite/OutputInventory.h"

void takeInventory(const InventoryRequest& request, const FindingSink& sink) {
  const auto places = findMasterPlaces(request.found);
  ExpectedOutputs expected;
  MasterInventory(request, sink, places, expected).take();
  OutputInventory(request, sink, expected).take();
}
