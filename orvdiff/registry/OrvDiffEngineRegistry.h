#pragma once

#include <map>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvOutputFormat.h"
#include "orvdiff/registry/OrvDiffEngine.h"

/// The library's entry point: knows which engines verify which format, and which listeners are
/// notified.
///
/// Owns neither engines nor listeners; the host keeps both alive while they are registered. Use it
/// on the process's one verifying thread, and do not change the listeners during a verification.
class ORVDIFF_API OrvDiffEngineRegistry {
 public:
  OrvDiffEngineRegistry();
  OrvDiffEngineRegistry(const OrvDiffEngineRegistry&) = delete;
  OrvDiffEngineRegistry& operator=(const OrvDiffEngineRegistry&) = delete;
  virtual ~OrvDiffEngineRegistry();

  /// Adds `engine` after those already registered for `format`. The same engine may be registered
  /// again, for this format (it then runs twice) or another. `engine` must not be null.
  void registerDiffEngine(OrvOutputFormat format, OrvDiffEngine* engine);

  /// Adds a listener. Adding it again has no effect. It must not be null: the first notification
  /// would raise `VELAssertError`.
  void addListener(OrvDiffListener* listener);

  /// Removes a listener; has no effect if it was not added.
  void removeListener(OrvDiffListener* listener);

  /// Has every engine of `format` verify the report at `location`, in the order of registration.
  /// `testInfo` may be null.
  ///
  /// Only comparisons are reported. A format without engines, a report without masters and a
  /// mistyped `location`, which looks like one, all return without notifying anyone, exactly as if
  /// there were nothing wrong. A host that must not take that for a pass counts notifications.
  ///
  /// An exception thrown by an engine or a listener passes through and keeps the format's remaining
  /// engines from running.
  void verifyOutput(OrvOutputFormat format, const char* location, OrvTestInfo* testInfo);

 private:
  std::multimap<OrvOutputFormat, OrvDiffEngine*> m_engines;
  OrvDiffListenerSet m_listeners;
};
