#include "core/CoreScope.h"

#include <utility>

namespace VorselKelp {
namespace {

thread_local const CoreScope* innermostScope = nullptr;

}  // namespace

CoreScope::CoreScope(std::shared_ptr<CoreContext> context)
    : context_(std::move(context)), outer_(std::exchange(innermostScope, this)) {}

CoreScope::~CoreScope() {
  innermostScope = outer_;
}

std::shared_ptr<CoreContext> CoreScope::innermost() {
  return innermostScope != nullptr ? innermostScope->context_ : nullptr;
}

}  // namespace VorselKelp
