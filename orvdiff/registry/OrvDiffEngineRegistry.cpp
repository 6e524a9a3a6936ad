#include "orvdiff/registry/OrvDiffEngineRegistry.h"

OrvDiffEngineRegistry::OrvDiffEngineRegistry() = default;
OrvDiffEngineRegistry::~OrvDiffEngineRegistry() = default;

void OrvDiffEngineRegistry::registerDiffEngine(OrvOutputFormat format, OrvDiffEngine* engine) {
  m_engines.emplace(format, engine);
}

void OrvDiffEngineRegistry::addListener(OrvDiffListener* listener) {
  m_listeners.insert(listener);
}

void OrvDiffEngineRegistry::removeListener(OrvDiffListener* listener) {
  m_listeners.erase(listener);
}

void OrvDiffEngineRegistry::verifyOutput(OrvOutputFormat format, const char* location,
                                         OrvTestInfo* testInfo) {
  const auto [first, last] = m_engines.equal_range(format);
  for (auto entry = first; entry != last; ++entry) {
    entry->second->verifyOutput(m_listeners, location, testInfo);
  }
}
