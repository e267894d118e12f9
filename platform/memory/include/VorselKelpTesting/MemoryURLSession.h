#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp::testing_platform {

/// What the pretended server says.
struct VORSELKELP_API ServerAnswer {
  int status = 200;
  std::string body;
  std::vector<platform::HTTPHeader> headers;
  std::optional<std::string> suggestedFilename;
  /// When set, the request ends with this instead of a response; a consumer gets the body all the same, as
  /// that of an answer which was cut off.
  std::optional<Error> error;

  static ServerAnswer failure(std::string description, int code = -1004);
};

/// A URL session that goes nowhere: it records every request and waits for the test to answer it. Requests
/// are numbered from 0 in the order of their sending, and keep their number.
///
/// Thread-safe. An answer runs the request's completion on the thread that gives it, outside all locks; give
/// answers from one thread at a time, as the delegate queue is serial. What a real session does with an
/// answer is done here too: a wanted body over the request's limit is an error, 204, 304 and `discardBody`
/// give no body, and a URL that is not absolute "http" or "https" is never answered but with an error. A
/// consumer gets the whole body at once, of one over the limit the beginning. Destruction answers what is
/// left with code -999.
class VORSELKELP_API MemoryURLSession final : public platform::URLSession {
 public:
  MemoryURLSession() = default;
  MemoryURLSession(const MemoryURLSession&) = delete;
  MemoryURLSession& operator=(const MemoryURLSession&) = delete;
  ~MemoryURLSession() override;

  void send(platform::URLRequest request, Completion completion) override;

  /// Every request so far, answered or not.
  [[nodiscard]] std::vector<platform::URLRequest> requests() const;
  [[nodiscard]] platform::URLRequest request(std::size_t number) const;
  /// The URLs of all requests.
  [[nodiscard]] std::vector<std::string> urls() const;
  /// The numbers of the requests that wait for an answer.
  [[nodiscard]] std::vector<std::size_t> unanswered() const;

  /// Answers one request; false when there is none of that number or it was answered before.
  bool answer(std::size_t number, const ServerAnswer& answer);

  /// From now on, requests whose URL has this path ("/v2/activity"; without the query) are answered so, each
  /// time answerByRules() is called. A later rule for the same path replaces the earlier one; the path "*"
  /// stands for all that have no rule of their own.
  void setRule(std::string path, ServerAnswer answer);
  /// Answers everything for which there is a rule, until nothing is left; returns how many were answered.
  std::size_t answerByRules();
  /// Answers everything that is left with code -999, and what that makes the library send too.
  void cancelAll();

  /// The path of a URL: what stands between its host and its query or fragment, "/" when nothing does.
  static std::string pathOf(std::string_view url);

 private:
  struct Entry {
    platform::URLRequest request;
    Completion completion;
  };
  static platform::URLResult resultFor(const platform::URLRequest& request, const ServerAnswer& answer);
  static Status consume(const platform::URLRequest& request, const ServerAnswer& answer);
  std::optional<ServerAnswer> ruleFor(const platform::URLRequest& request) const;

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
  std::map<std::string, ServerAnswer, std::less<>> rules_;
};

}  // namespace VorselKelp::testing_platform
