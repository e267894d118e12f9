#include "VorselKelpTesting/MemoryURLSession.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace VorselKelp::testing_platform {

using platform::HTTPURLResponse;
using platform::URLRequest;
using platform::URLResult;

namespace {

constexpr int cancelled = -999;
constexpr int unsupportedURL = -1002;
constexpr int tooLarge = -1103;

/// Schemes are the same in any letter case.
bool isRequestable(std::string_view url) {
  const auto same = [](char a, char b) { return a == b || (a >= 'A' && a <= 'Z' && a + ('a' - 'A') == b); };
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (std::ranges::equal(url.substr(0, scheme.size()), scheme, same))
      return url.size() > scheme.size() && url[scheme.size()] != '/';
  }
  return false;
}

URLResult failed(Error error) {
  return {std::nullopt, std::nullopt, std::move(error)};
}

bool hasBody(const URLRequest& request, const ServerAnswer& answer) {
  return answer.status != 204 && answer.status != 304 && !request.discardBody;
}

std::optional<std::string> lastPathComponent(std::string_view url) {
  const std::string path = MemoryURLSession::pathOf(url);
  std::string name = path.substr(path.rfind('/') + 1);
  return name.empty() ? std::nullopt : std::optional(std::move(name));
}

}  // namespace

ServerAnswer ServerAnswer::failure(std::string description, int code) {
  ServerAnswer answer;
  answer.error = Error{std::move(description), code};
  return answer;
}

MemoryURLSession::~MemoryURLSession() {
  cancelAll();
}

void MemoryURLSession::send(URLRequest request, Completion completion) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({std::move(request), std::move(completion)});
}

std::vector<URLRequest> MemoryURLSession::requests() const {
  const std::lock_guard lock(mutex_);
  std::vector<URLRequest> all;
  for (const auto& entry : entries_) all.push_back(entry.request);
  return all;
}

URLRequest MemoryURLSession::request(std::size_t number) const {
  const std::lock_guard lock(mutex_);
  return entries_.at(number).request;
}

std::vector<std::string> MemoryURLSession::urls() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> all;
  for (const auto& entry : entries_) all.push_back(entry.request.url);
  return all;
}

std::vector<std::size_t> MemoryURLSession::unanswered() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::size_t> numbers;
  for (std::size_t number = 0; number < entries_.size(); ++number) {
    if (entries_[number].completion) numbers.push_back(number);
  }
  return numbers;
}

bool MemoryURLSession::answer(std::size_t number, const ServerAnswer& answer) {
  Completion completion;
  URLRequest request;
  {
    const std::lock_guard lock(mutex_);
    if (number >= entries_.size() || !entries_[number].completion) return false;
    completion = std::exchange(entries_[number].completion, nullptr);
    request = entries_[number].request;
    entries_[number].request.bodyConsumer = nullptr;
  }
  const Status taken = consume(request, answer);
  URLResult result = taken ? resultFor(request, answer) : failed(taken.error());
  request.bodyConsumer = nullptr;
  completion(std::move(result));
  return true;
}

void MemoryURLSession::setRule(std::string path, ServerAnswer answer) {
  const std::lock_guard lock(mutex_);
  rules_.insert_or_assign(std::move(path), std::move(answer));
}

std::size_t MemoryURLSession::answerByRules() {
  std::size_t answered = 0;
  for (bool again = true; again;) {
    again = false;
    for (const std::size_t number : unanswered()) {
      const auto rule = ruleFor(request(number));
      if (!rule || !answer(number, *rule)) continue;
      ++answered;
      again = true;
    }
  }
  return answered;
}

void MemoryURLSession::cancelAll() {
  const auto last = ServerAnswer::failure("cancelled", cancelled);
  for (auto numbers = unanswered(); !numbers.empty(); numbers = unanswered()) {
    for (const std::size_t number : numbers) answer(number, last);
  }
}

std::string MemoryURLSession::pathOf(std::string_view url) {
  const auto authority = url.find("://");
  const auto begin = url.find_first_of("/?#", authority == std::string_view::npos ? 0 : authority + 3);
  if (begin == std::string_view::npos || url[begin] != '/') return "/";
  const auto end = url.find_first_of("?#", begin);
  return std::string(url.substr(begin, end == std::string_view::npos ? end : end - begin));
}

Status MemoryURLSession::consume(const URLRequest& request, const ServerAnswer& answer) {
  const auto body = std::string_view(answer.body).substr(0, request.responseLimit);
  if (!request.bodyConsumer || body.empty() || !hasBody(request, answer) || !isRequestable(request.url))
    return Done{};
  return request.bodyConsumer(body);
}

URLResult MemoryURLSession::resultFor(const URLRequest& request, const ServerAnswer& answer) {
  if (answer.error) return failed(*answer.error);
  if (!isRequestable(request.url)) return failed({"unsupported URL", unsupportedURL});
  if (answer.body.size() > request.responseLimit && !request.discardBody)
    return failed({"the response is larger than allowed", tooLarge});
  URLResult result;
  result.response = HTTPURLResponse{answer.status, answer.headers, request.url, answer.suggestedFilename};
  if (!result.response->suggestedFilename)
    result.response->suggestedFilename = lastPathComponent(request.url);
  if (hasBody(request, answer)) result.body = request.bodyConsumer ? std::string() : answer.body;
  return result;
}

std::optional<ServerAnswer> MemoryURLSession::ruleFor(const URLRequest& request) const {
  const std::lock_guard lock(mutex_);
  auto found = rules_.find(pathOf(request.url));
  if (found == rules_.end()) found = rules_.find("*");
  if (found != rules_.end()) return found->second;
  // No test needs a rule for what no session would ever open.
  if (!isRequestable(request.url)) return ServerAnswer::failure("unsupported URL", unsupportedURL);
  return std::nullopt;
}

}  // namespace VorselKelp::testing_platform
