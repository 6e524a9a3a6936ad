#include "cli/workers/WorkerPool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <sys/wait.h>
#include <csignal>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

std::string stepName(std::uint32_t task, std::uint64_t step) {
  return std::to_string(task) + '.' + std::to_string(step);
}

/// Tasks of some steps each; what a step does in its worker is the test's to say.
class Steps : public PoolWork {
 public:
  Steps(std::uint64_t stepsPerTask, std::function<void(const std::string&)> action)
      : m_stepsPerTask(stepsPerTask), m_action(std::move(action)) {}

  void perform(std::uint32_t task, std::uint64_t firstStep, WorkerLink& link) override {
    for (std::uint64_t step = firstStep; step < m_stepsPerTask; ++step) {
      link.begin(step, stepName(task, step));
      if (stepName(task, step) == tellsSoFar) {
        link.sendSoFar("so far " + tellsSoFar);
      }
      m_action(stepName(task, step));
      link.send(stepName(task, step));
    }
  }
  bool isRepeatable(std::uint64_t step) const override { return step == 0; }
  void received(std::uint32_t /*task*/, std::string_view message) override {
    events.emplace_back(message);
  }
  void lost(std::uint32_t /*task*/, std::string_view description, const WorkerLoss& loss) override {
    const int status = loss.waitStatus;
    events.push_back("lost " + std::string(description) +
                     (loss.timedOut         ? " timeout"
                      : WIFSIGNALED(status) ? " signal " + std::to_string(WTERMSIG(status))
                                            : " status " + std::to_string(WEXITSTATUS(status))));
  }
  void finished(std::uint32_t task) override { events.push_back("end " + std::to_string(task)); }

  std::vector<std::string> events;
  std::string tellsSoFar;  ///< a step

 private:
  std::uint64_t m_stepsPerTask;
  std::function<void(const std::string&)> m_action;
};

/// What a run must deliver, when the steps in `lost` end as they say.
std::vector<std::string> expected(std::uint32_t tasks, std::uint64_t steps,
                                  const std::map<std::string, std::string>& lost = {}) {
  std::vector<std::string> events;
  for (std::uint32_t task = 0; task < tasks; ++task) {
    for (std::uint64_t step = 0; step < steps; ++step) {
      const auto found = lost.find(stepName(task, step));
      events.push_back(found == lost.end() ? stepName(task, step) : found->second);
    }
    events.push_back("end " + std::to_string(task));
  }
  return events;
}

TEST(WorkerPool, DeliversInOrderAndLosesOnlyTheStepThatKillsItsWorker) {
  for (const std::size_t workers : {1U, 2U, 64U}) {
    int tokens[2] = {};  // one, for the step that dies at the first try only
    ASSERT_EQ(pipe2(tokens, O_NONBLOCK), 0);
    ASSERT_EQ(write(tokens[1], "", 1), 1);
    int ends[2] = {};  // its reader sees the end once every process that a worker started is gone
    ASSERT_EQ(pipe(ends), 0);
    Steps steps(3, [&tokens](const std::string& name) {
      char token = 0;
      if (name == "3.1") {
        fork() == 0 ? execlp("sleep", "sleep", "30", nullptr) : raise(SIGKILL);
      } else if (name == "4.0") {
        throw 1;  // at every try
      } else if (name == "6.0" && read(tokens[0], &token, 1) == 1) {
        raise(SIGKILL);
      } else if (name == "7.1") {
        raise(SIGKILL);  // after it has sent what it knew
      } else if (name == "5.2") {
        for (;;) {
          pause();
        }
      } else if (name == "0.0") {
        usleep(20'000);  // others overtake it
      }
    });
    steps.tellsSoFar = "7.1";
    WorkerPool pool(steps, 20, {workers, 1.5, 0});
    EXPECT_TRUE(pool.run([] { return false; }));
    EXPECT_EQ(steps.events, expected(20, 3,
                                     {{"3.1", "lost 3.1 signal 9"},
                                      {"4.0", "lost 4.0 status 1"},
                                      {"5.2", "lost 5.2 timeout"},
                                      {"7.1", "lost so far 7.1 signal 9"}}))
        << workers;
    close(ends[1]);
    pollfd reader = {ends[0], POLLIN, 0};
    ASSERT_EQ(poll(&reader, 1, 10'000), 1) << "a process is left";
    for (const int end : {ends[0], tokens[0], tokens[1]}) {
      close(end);
    }
  }
}

TEST(WorkerPool, SurvivesWorkersKilledAtAnyTime) {
  std::mt19937 random(7);
  std::size_t losses = 0;
  for (int round = 0; round < 60; ++round) {
    int kills = 2;  // one more in a row, and a task would be given up
    const auto killSomeone = [&random, &kills] {
      std::ifstream file("/proc/thread-self/children");
      const std::vector<pid_t> children(std::istream_iterator<pid_t>(file), {});
      if (!children.empty() && random() % 30 == 0 && kills-- > 0) {
        kill(children[random() % children.size()], SIGKILL);
      }
      return false;
    };
    Steps steps(5, [](const std::string& /*name*/) { usleep(100); });
    EXPECT_TRUE(WorkerPool(steps, 20, {3, 0, 0}).run(killSomeone));
    for (std::string& event : steps.events) {
      if (event.rfind("lost ", 0) == 0) {
        event = event.substr(5, event.find(' ', 5) - 5);
        ++losses;
      }
    }
    ASSERT_EQ(steps.events, expected(20, 5)) << "each step once, in order";
  }
  EXPECT_GT(losses, 0U);
}

TEST(WorkerPool, StopsWhenAskedDeliversWhatArrivedAndLeavesNoProcess) {
  int ends[2] = {};  // something to read: the third task is done, and the fourth has begun
  ASSERT_EQ(pipe(ends), 0);
  Steps steps(1, [&ends](const std::string& name) {
    if (name != "0.0" && name != "2.0") {
      if (fork() == 0) {
        setsid();
        pause();
      }
      EXPECT_EQ(write(ends[1], "", name == "3.0" ? 1 : 0), name == "3.0" ? 1 : 0);
      pause();
    }
  });
  {
    WorkerPool pool(steps, 4, {2, 0, 0});
    pollfd reader = {ends[0], POLLIN, 0};
    int looks = 0;
    EXPECT_FALSE(pool.run([&] { return poll(&reader, 1, 0) == 1 && ++looks > 1; }));
  }
  close(ends[0]);
  close(ends[1]);
  EXPECT_EQ(steps.events, (std::vector<std::string>{"0.0", "end 0", "2.0", "end 2"}));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

}  // namespace
