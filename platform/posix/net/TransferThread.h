#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "VorselKelp/platform/URLSession.h"
#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpPosix/SerialQueue.h"
#include "net/CurlLibrary.h"
#include "net/Transfer.h"

namespace VorselKelp::posix {

/// Moves the bytes of all requests on a thread of its own and posts each answer to the delegate queue, which
/// must outlive it. libcurl is loaded by that thread, when the first request comes.
class TransferThread {
 public:
  TransferThread(URLSessionOptions options, SerialQueue& delegate);
  ~TransferThread() { stop(); }
  TransferThread(const TransferThread&) = delete;
  TransferThread& operator=(const TransferThread&) = delete;

  /// Any thread. After stop() the answer is "cancelled".
  void add(platform::URLRequest request, platform::URLSession::Completion completion);

  /// Ends the thread; whatever has no answer yet is answered with "cancelled".
  void stop();

 private:
  struct Pending {
    platform::URLRequest request;
    platform::URLSession::Completion completion;
  };

  void run();
  void refuseAll(const std::string& reason);
  void transfer(const CurlLibrary& curl);
  bool takePending();
  void startTransfers(const CurlLibrary& curl);
  void start(const CurlLibrary& curl, Pending pending);
  void collectAnswers(const CurlLibrary& curl);
  void endOverdue(const CurlLibrary& curl);
  void end(const CurlLibrary& curl, CURL* handle, CURLcode code);
  [[nodiscard]] int waitingTime() const;
  void answer(Transfer& transfer, platform::URLResult result);
  void refuse(Pending pending, Error error);
  void answer(platform::URLSession::Completion completion, platform::BodyConsumer consumer,
              platform::URLResult result);

  const URLSessionOptions options_;
  SerialQueue& delegate_;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Pending> incoming_;
  bool stopping_ = false;
  std::thread thread_;
  // Set while the thread waits in libcurl, so that it can be woken there.
  CURLM* multi_ = nullptr;
  const CurlLibrary* curl_ = nullptr;

  // The thread's own.
  std::deque<Pending> waiting_;
  std::map<CURL*, std::unique_ptr<Transfer>> active_;
};

}  // namespace VorselKelp::posix
