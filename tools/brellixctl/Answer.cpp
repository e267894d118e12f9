#include "brellixctl/Answer.h"

#include <algorithm>
#include <cstdio>

#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/Operations.h"
#include "brellixctl/PlainText.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;

namespace {

/// The command line's own, which all commands follow.
bool inJSON = false;

std::string oneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

}  // namespace

void answerInJSON(bool json) {
  inJSON = json;
}

int answer(JSONAny::Dictionary json, const std::string& words, const std::string& failure) {
  if (inJSON) {
    if (!failure.empty()) json.push_back({"error", failure});
    std::printf("%s\n", VorselKelp::system::encodeLossy(std::move(json)).c_str());
  } else {
    printWords(words);
  }
  if (failure.empty()) return 0;
  printErrorLine("brellixctl: " + oneLine(failure));
  return 1;
}

int fail(const Error& error) {
  (void)answer({}, {}, error.description);
  return error.code == wrongUsage ? 2 : 1;
}

int fail(const std::string& reason) {
  return fail(Error{reason});
}

}  // namespace brellixctl
