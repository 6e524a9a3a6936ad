#pragma once

#include "orvdiff/orvdiff_export.h"

/// The initialisation of Xerces, which the engines that validate XML need.
///
/// A host that uses Xerces itself calls `XMLPlatformUtils::Initialize` before such an engine meets
/// its first document. Any other host can leave it to the library, and then need not link Xerces,
/// nor pay for it in a run that meets no XML: `OrvXerces::initializeOnDemand(report)`.
class ORVDIFF_API OrvXerces {
 public:
  /// From now on, the first document that an engine validates initialises Xerces; nothing
  /// terminates it. `onPanic` is called with a reason when Xerces cannot be initialised or cannot
  /// go on. It must not return: nothing is known of the state of Xerces then.
  static void initializeOnDemand(void (*onPanic)(const char* reason));
};
