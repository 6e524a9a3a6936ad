#include "cli/workers/DeliveryOrder.h"

#include <gtest/gtest.h>

namespace {

/// Writes down what it is told, task first: "0a" is the message "a", "0-a" the loss of it, "0." the
/// end.
class Told : public PoolWork {
 public:
  void perform(std::uint32_t, std::uint64_t, WorkerLink&) override {}
  void received(std::uint32_t task, std::string_view message) override { tell(task, "", message); }
  void lost(std::uint32_t task, std::string_view what, const WorkerLoss&) override {
    tell(task, "-", what);
  }
  void finished(std::uint32_t task) override { tell(task, ".", ""); }

  std::string all;

 private:
  void tell(std::uint32_t task, const char* kind, std::string_view text) {
    all += std::to_string(task) + kind + std::string(text) + ' ';
  }
};

TEST(DeliveryOrder, TellsOfTasksInTheirOrderWhateverComesFirst) {
  struct Row {
    const char* happens;  ///< in the words of `Told`; "!" gives up
    const char* told;
    std::uint32_t next;
    std::size_t heldBack;
  };
  const Row rows[] = {
      {"0a 0b 0.", "0a 0b 0. ", 1, 0},
      {"1a 0a", "0a ", 0, 1},
      {"1a 1. 0a 0.", "0a 0. 1a 1. ", 2, 0},
      {"2abc 1a 0. 2d", "0. 1a ", 1, 4},
      {"2abc 1a 0. 2d 1. 2e", "0. 1a 1. 2abc 2d 2e ", 2, 0},
      {"1-x 0-y 0. 1. 2.", "0-y 0. 1-x 1. 2. ", 3, 0},
      {"0. 0. 1a", "0. 1a ", 1, 0},
      {"1a 2b 2. !", "1a 2b 2. ", 0, 0},
      {"0a 2b !", "0a 2b ", 0, 0},
  };
  for (const Row& row : rows) {
    Told told;
    DeliveryOrder order(told, 3);
    std::istringstream words(row.happens);
    for (std::string word; words >> word;) {
      const auto task = static_cast<std::uint32_t>(word[0] - '0');
      if (word == "!") {
        order.giveUp();
      } else if (word[1] == '.') {
        order.finish(task);
      } else if (word[1] == '-') {
        order.lose(task, word.substr(2), {});
      } else {
        order.receive(task, word.substr(1));
      }
    }
    EXPECT_EQ(told.all, row.told) << row.happens;
    EXPECT_EQ(order.next(), row.next) << row.happens;
    EXPECT_EQ(order.heldBack(), row.heldBack) << row.happens;
  }
}

}  // namespace
