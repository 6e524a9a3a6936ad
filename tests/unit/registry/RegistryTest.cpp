#include "orvdiff/registry/OrvDiffEngineRegistry.h"

#include <functional>
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
      std::vector<Level> expected;
      for (const Level level : chain) {
        if ((overridden & (1U << level)) != 0 && expected.empty()) {
          expected.push_back(level);
        }
      }
      PartialListener listener(overridden);
      result->notifyListener(listener);
      EXPECT_EQ(listener.received, expected) << chain.front() << " with " << overridden;
    }
  }
}

struct CallbackEngine : OrvDiffEngine {
  using Callback = std::function<void(const OrvDiffListenerSet&, const char*, OrvTestInfo*)>;
  explicit CallbackEngine(Callback callback) : m_callback(std::move(callback)) {}
  void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                    OrvTestInfo* testInfo) override {
    m_callback(listeners, location, testInfo);
  }
  Callback m_callback;
};

TEST(EngineRegistry, RunsTheEnginesOfAFormatInOrderUntilOneRaises) {
  OrvDiffListener kept;
  OrvDiffListener removed;
  auto* const info = reinterpret_cast<OrvTestInfo*>(&kept);  // only handed on
  std::string calls;
  const auto record = [&](char name) {
    return [&, name](const auto& listeners, const char* location, OrvTestInfo* given) {
      calls += name;
      EXPECT_EQ(listeners, OrvDiffListenerSet{&kept});
      EXPECT_STREQ(location, "suite/R.xml");
      EXPECT_EQ(given, info);
    };
  };
  CallbackEngine a(record('a'));
  CallbackEngine b(record('b'));
  CallbackEngine raising([](auto&&...) { throw std::runtime_error("engine"); });
  constexpr auto kOfAHost = static_cast<OrvOutputFormat>(-1);
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(OrvOutputFormat::Html, &b);
  registry.registerDiffEngine(kOfAHost, &a);
  registry.registerDiffEngine(kOfAHost, &raising);
  registry.registerDiffEngine(kOfAHost, &b);
  registry.registerDiffEngine(OrvOutputFormat::Html, &a);
  registry.registerDiffEngine(OrvOutputFormat::Html, &b);
  registry.removeListener(&removed);
  registry.addListener(&removed);
  registry.addListener(&kept);
  registry.addListener(&kept);
  registry.removeListener(&removed);
  registry.verifyOutput(OrvOutputFormat::Csv, "suite/R.xml", info);
  EXPECT_EQ(calls, "");
  registry.verifyOutput(OrvOutputFormat::Html, "suite/R.xml", info);
  EXPECT_EQ(calls, "bab");
  EXPECT_THROW(registry.verifyOutput(kOfAHost, "suite/R.xml", info), std::runtime_error);
  EXPECT_EQ(calls, "baba");
}

}  // namespace
