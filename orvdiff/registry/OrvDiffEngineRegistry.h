#pragma once

#include <map>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvOutputFormat.h"
#include "orvdiff/registry/OrvDiffEngine.h"

/// The library's entry point: which engines verify which format, and who hears of it.
///
/// Owns neither engines nor listeners; the host keeps both alive while they are registered. Takes
/// no lock: one verification at a time, and no change of listeners while one runs.
class ORVDIFF_API OrvDiffEngineRegistry {
 public:
  OrvDiffEngineRegistry();
  OrvDiffEngineRegistry(const OrvDiffEngineRegistry&) = delete;
  OrvDiffEngineRegistry& operator=(const OrvDiffEngineRegistry&) = delete;
  virtual ~OrvDiffEngineRegistry();

  /// Adds `engine` after those already registered for `format`. The same engine may be registered
  /// again, for this format (it then runs twice) or another. `engine` must not be null.
  void registerDiffEngine(OrvOutputFormat format, OrvDiffEngine* engine);

  /// Adds a listener; one that is there already is left as it is.
  void addListener(OrvDiffListener* listener);

  /// Removes a listener if it is there.
  void removeListener(OrvDiffListener* listener);

  /// Has every engine of `format` verify the report at `location`, in the order of registration. A
  /// format without engines does nothing. `testInfo` may be null. An exception of an engine or a
  /// listener passes through and keeps the format's later engines from running.
  void verifyOutput(OrvOutputFormat format, const char* location, OrvTestInfo* testInfo);

 private:
  std::multimap<OrvOutputFormat, OrvDiffEngine*> m_engines;
  OrvDiffListenerSet m_listeners;
};
