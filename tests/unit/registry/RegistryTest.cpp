#include "orvdiff/registry/OrvDiffEngineRegistry.h"

#include <algorithm>
#include <stdexcept>

#include "tests/support/Testing.h"

namespace {

enum Level { eMissing, eNormalized, eDiff, eFail, ePass, eResult, eLevelCount };

/// A listener that overrides any set of overloads: those outside the set do what the base does.
class PartialListener : public OrvDiffListener {
 public:
  explicit PartialListener(unsigned overridden) : m_overridden(overridden) {}
  void comparisonNotification(const Recorder::Missing& r) override { on(eMissing, r); }
  void comparisonNotification(const Recorder::Normalized& r) override { on(eNormalized, r); }
  void comparisonNotification(const OrvDiffResultFailDiff& r) override { on(eDiff, r); }
  void comparisonNotification(const OrvDiffResultFail& r) override { on(eFail, r); }
  void comparisonNotification(const OrvDiffResultPass& r) override { on(ePass, r); }
  void comparisonNotification(const OrvDiffResult& r) override { on(eResult, r); }
  std::vector<Level> received;

 private:
  template <typename Result>
  void on(Level level, const Result& result) {
    if ((m_overridden & (1U << level)) != 0) {
      received.push_back(level);
    } else {
      OrvDiffListener::comparisonNotification(result);
    }
  }
  unsigned m_overridden;
};

TEST(ResultHandOn, EveryClassReachesTheMostSpecificOverriddenOverloadOnce) {
  const OrvDiffResultPass pass("m", "a");
  const OrvDiffResultFail fail("m", "a");
  const OrvDiffResultFailDiff diff("m", "a");
  const Recorder::Normalized normalized("m", "a", new char[1](), nullptr, 7);
  const Recorder::Missing missing("m", "a", "a");
  const std::pair<const OrvDiffResult*, std::vector<Level>> kRows[] = {
      {&pass, {ePass, eResult}},  // the overloads it may reach, most specific first
      {&fail, {eFail, eResult}},
      {&diff, {eDiff, eFail, eResult}},
      {&normalized, {eNormalized, eDiff, eFail, eResult}},
      {&missing, {eMissing, eFail, eResult}}};
  for (const auto& [result, chain] : kRows) {
    EXPECT_EQ(result->isPassed(), result == &pass);
    for (unsigned overridden = 0; overridden < 1U << eLevelCount; ++overridden) {
      const auto first = std::find_if(chain.begin(), chain.end(), [=](const Level level) {
        return (overridden & (1U << level)) != 0;
      });
      const std::vector<Level> expected(first, first == chain.end() ? first : first + 1);
      PartialListener listener(overridden);
      result->notifyListener(listener);
      EXPECT_EQ(listener.received, expected) << chain.front() << " with " << overridden;
    }
  }
}

struct RecordingEngine : OrvDiffEngine {
  explicit RecordingEngine(char name) : m_name(name) {}
  void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                    OrvTestInfo* testInfo) override {
    calls += m_name;
    EXPECT_EQ(listeners, OrvDiffListenerSet{reinterpret_cast<OrvDiffListener*>(testInfo)});
    EXPECT_STREQ(location, "suite/R.xml");
    if (m_name == '!') {
      throw std::runtime_error("engine");
    }
  }
  static inline std::string calls;

 private:
  char m_name;
};

TEST(EngineRegistry, RunsTheEnginesOfAFormatInOrderUntilOneRaises) {
  OrvDiffListener kept, removed;
  auto* const info = reinterpret_cast<OrvTestInfo*>(&kept);  // only handed on
  RecordingEngine a('a'), b('b'), raising('!');
  constexpr auto kHtml = OrvOutputFormat::Html;
  constexpr auto kOfAHost = static_cast<OrvOutputFormat>(-1);
  OrvDiffEngineRegistry registry;
  const std::pair<OrvOutputFormat, OrvDiffEngine*> kRegistered[] = {
      {kHtml, &b}, {kOfAHost, &a}, {kOfAHost, &raising}, {kOfAHost, &b}, {kHtml, &a}, {kHtml, &b}};
  for (const auto& [format, engine] : kRegistered) {
    registry.registerDiffEngine(format, engine);
  }
  registry.removeListener(&removed);
  for (OrvDiffListener* const listener : {&removed, &kept, &kept}) {
    registry.addListener(listener);
  }
  registry.removeListener(&removed);
  registry.verifyOutput(OrvOutputFormat::Csv, "suite/R.xml", info);
  registry.verifyOutput(kHtml, "suite/R.xml", info);
  EXPECT_EQ(RecordingEngine::calls, "bab");
  EXPECT_THROW(registry.verifyOutput(kOfAHost, "suite/R.xml", info), std::runtime_error);
  EXPECT_EQ(RecordingEngine::calls, "baba!");
}

}  // namespace
