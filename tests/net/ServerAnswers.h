#pragma once

#include <string>
#include <utility>

#include "VorselKelpTesting/MemoryURLSession.h"

namespace VorselKelp {

inline testing_platform::ServerAnswer status(int code, std::string body = {}) {
  testing_platform::ServerAnswer answer;
  answer.status = code;
  answer.body = std::move(body);
  return answer;
}

}  // namespace VorselKelp
