#include "VorselKelpSystem/Delivery.h"

#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <thread>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "VorselKelpSystem/RemoteNotification.h"

namespace VorselKelp::system {
namespace {

constexpr std::size_t atOnce = 4;

struct Job {
  Push push;
  PushResult unchanged;
  PushAnswers answers;
  bool answered = false;
};

/// The content that the extension gave in this event; absent when it is no such event, or makes no sense.
std::optional<platform::NotificationContent> contentIn(const JSONAny& event, const PushResult& unchanged) {
  const auto* json = event.find("content");
  const auto isText = [json](std::string_view key) {
    const auto* member = json->find(key);
    return member != nullptr && member->as<std::string>() != nullptr;
  };
  if (json == nullptr || !isText("title") || !isText("body")) return std::nullopt;
  auto content = decodeContent(*json);
  const auto* changed = json->find("userInfo");
  const auto* dictionary = changed != nullptr ? changed->as<JSONAny::Dictionary>() : nullptr;
  content.userInfo =
      dictionary != nullptr ? platform::UserInfo(*dictionary) : unchanged.request.content.userInfo;
  return content;
}

Result<PushResult> readPush(const Push& push) {
  const auto json = JSONAny::decode(push.payload);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr) return Error{"The payload is no JSON object"};
  PushResult result;
  result.kind = remoteKind(*json);
  result.request.identifier = push.identifier;
  if (result.kind != RemoteKind::silent) result.request.content = unchangedContent(*json);
  result.request.content.userInfo = platform::UserInfo::fromJSON(push.payload);
  return result;
}

class ServiceDelivery final : public Delivery {
 public:
  ServiceDelivery(ServiceProgram program, std::shared_ptr<platform::MainQueue> mainQueue)
      : program_(std::move(program)), mainQueue_(std::move(mainQueue)) {}
  ~ServiceDelivery() override {
    alive_ = nullptr;
    {
      const std::lock_guard lock(mutex_);
      over_ = true;
    }
    ::eventfd_write(stop_.number(), 1);
    changed_.notify_all();
    for (auto& worker : workers_) worker.join();
  }
  ServiceDelivery(const ServiceDelivery&) = delete;
  ServiceDelivery& operator=(const ServiceDelivery&) = delete;

  void deliver(Push push, PushAnswers answers) override {
    auto read = readPush(push);
    if (!read) {
      post(std::move(answers.result), Result<PushResult>(read.error()));
      return post(std::move(answers.ended), ExtensionReport());
    }
    const std::lock_guard lock(mutex_);
    waiting_.push_back({std::move(push), *std::move(read), std::move(answers), false});
    dispatch();
  }

 private:
  /// Under the lock: lets everything begin that may. A push waits for a free process, and until the one
  /// before it with its collapse key was answered.
  void dispatch() {
    if (over_) return;
    auto behind = unanswered_;
    for (auto job = waiting_.begin(); job != waiting_.end();) {
      const auto& key = job->push.collapseKey;
      const bool needsProcess = job->unchanged.kind == RemoteKind::changeable && !program_.program.empty();
      if (behind.contains(key) || (needsProcess && running_ == atOnce)) {
        if (!key.empty()) behind.insert(key);
        ++job;
        continue;
      }
      needsProcess ? begin(std::move(*job), behind) : answerUnchanged(*job);
      job = waiting_.erase(job);
    }
  }

  void begin(Job job, std::set<std::string>& behind) {
    if (!job.push.collapseKey.empty()) {
      unanswered_.insert(job.push.collapseKey);
      behind.insert(job.push.collapseKey);
    }
    ready_.push_back(std::move(job));
    if (++running_ > workers_.size()) startWorker();
    changed_.notify_one();
  }

  void answerUnchanged(Job& job) {
    post(std::move(job.answers.result), Result<PushResult>(std::move(job.unchanged)));
    post(std::move(job.answers.ended), ExtensionReport());
  }

  void startWorker() {
    // Signals belong to the application's own threads.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    workers_.emplace_back([this] { work(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }

  void work() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return over_ || !ready_.empty(); });
      if (over_) return;
      auto job = std::move(ready_.front());
      ready_.pop_front();
      lock.unlock();
      run(job);
      lock.lock();
      --running_;
      dispatch();
    }
  }

  void run(Job& job) {
    ChildCommand command;
    command.program = program_.program;
    command.arguments = program_.arguments;
    command.environment = program_.environment;
    command.input = job.push.payload;
    command.channel = program_.channel;
    command.timeLimit = program_.timeLimit;
    command.outputLimit = program_.outputLimit;
    command.arguments.insert(command.arguments.end(), {"--id", job.push.identifier, "--time-limit",
                                                       std::to_string(program_.timeLimit)});
    const auto noteContent = [&](const JSONAny& event) {
      auto content = contentIn(event, job.unchanged);
      if (!content || job.answered) return;
      job.unchanged.request.content = *std::move(content);
      answer(job);
    };
    auto outcome = runChild(command, {noteContent, nullptr, stop_.number()});
    if (!job.answered) answer(job);
    ExtensionReport report;
    if (!outcome) report.notStarted = outcome.error();
    if (outcome) report.outcome = *std::move(outcome);
    post(std::move(job.answers.ended), std::move(report));
  }

  void answer(Job& job) {
    job.answered = true;
    post(std::move(job.answers.result), Result<PushResult>(job.unchanged));
    const std::lock_guard lock(mutex_);
    unanswered_.erase(job.push.collapseKey);
    dispatch();
  }

  template <class Answer, class Value>
  void post(Answer answer, Value value) {
    if (!answer) return;
    mainQueue_->async([alive = watched_, answer = std::move(answer), value = std::move(value)]() mutable {
      if (!alive.expired()) answer(std::move(value));
    });
  }

  const ServiceProgram program_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
  const std::weak_ptr<const bool> watched_ = alive_;
  const posix::Descriptor stop_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  std::mutex mutex_;
  std::condition_variable changed_;
  bool over_ = false;
  std::deque<Job> waiting_;
  std::deque<Job> ready_;
  std::size_t running_ = 0;
  std::set<std::string> unanswered_;  // collapse keys
  std::vector<std::thread> workers_;
};

}  // namespace

std::shared_ptr<Delivery> makeDelivery(ServiceProgram program,
                                       std::shared_ptr<platform::MainQueue> mainQueue) {
  return std::make_shared<ServiceDelivery>(std::move(program), std::move(mainQueue));
}

}  // namespace VorselKelp::system
