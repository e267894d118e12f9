#include <benchmark/benchmark.h>

#include <boost/json.hpp>
#include <string>
#include <vector>

#include "kellp/Kellp.h"
#include "support/BareStore.h"
#include "support/BenchmarkPlatform.h"

namespace VorselKelp::benchmarks {
namespace {

void deliver(Kellp& kellp, const std::string& payload, const std::string& identifier) {
  platform::NotificationRequest request;
  request.identifier = identifier;
  request.content.userInfo = platform::UserInfo::fromJSON(payload);
  bool shown = false;
  kellp.serviceExtension->didReceive(request,
                                     std::make_shared<platform::NotificationContent>(request.content),
                                     [&shown](const auto&) { shown = true; });
  if (!shown) std::abort();
}

std::shared_ptr<Kellp> makeCore(const TemporaryFolder& folder,
                                std::vector<platform::NotificationCategory> categories = {}) {
  auto kellp = std::make_shared<Kellp>(benchmarkPlatform(folder.path, std::move(categories)));
  (void)configured(kellp->context);
  return kellp;
}

void push(benchmark::State& state) {
  const TemporaryFolder folder;
  const auto kellp = makeCore(folder);
  const std::string payload = textPush();
  int number = 0;
  for (auto _ : state) deliver(*kellp, payload, "n-" + std::to_string(number++));
}

/// Parses the payload and commits what opening it does: trackers, the tap's URL and two buttons', the
/// category.
void barePush(benchmark::State& state) {
  const TemporaryFolder folder;
  BareStore store(folder.path + "/bare.sqlite");
  const std::string payload = textPush();
  int number = 0;
  for (auto _ : state) {
    boost::json::monotonic_resource memory(payload.size() + 1024);
    const auto parsed = boost::json::parse(payload, &memory);
    const auto& n = parsed.at_pointer("/aps/alert/n").as_object();
    const std::string identifier = "n-" + std::to_string(number++);
    const auto url = std::string_view(n.at("data").at("url").as_string());
    store.begin();
    for (const auto& action : n.at("actions").as_array())
      store.writeEntry("vs_url", identifier, std::string_view(action.at("action").as_string()),
                       std::string_view(action.at("url").as_string()));
    store.write("vs_category", "Vorsel_categ_1");
    store.writeEntry("vs_t", identifier, "", boost::json::serialize(n.at("data").at("t")));
    store.writeEntry("vs_url", identifier, "com.apple.UNNotificationDefaultActionIdentifier", url);
    store.writeEntry("vs_tags", std::string_view(n.at("tag").as_string()), "", identifier);
    store.commit();
  }
}

constexpr int registeredCategories = 100;

/// Leaves a store that was closed in good order, so that no log of the preparation is worked off while we
/// measure.
void storeUnopened(const TemporaryFolder& folder, int unopened) {
  const auto kellp = makeCore(folder);
  kellp->context->storage.transact([&] {
    for (int i = 0; i < unopened; ++i) {
      const Conversion conversion{"https://news.example/old", {{"https://track.example/click"}}};
      kellp->openTargets->store(conversion, "old-" + std::to_string(i));
    }
  });
}

/// Deliveries on top of `unopened` earlier ones.
void deliverOnTop(benchmark::State& state, int unopened) {
  const TemporaryFolder folder;
  std::vector<platform::NotificationCategory> categories;
  for (int i = 0; i < registeredCategories; ++i)
    categories.push_back({"Vorsel_categ_" + std::to_string(i), {{"read", "Read"}, {"no", "No"}}, true});
  storeUnopened(folder, unopened);
  const auto kellp = makeCore(folder, std::move(categories));
  deliver(*kellp, textPush(), "first");  // opens the store
  const std::string payload = textPush();
  int number = 0;
  for (auto _ : state) deliver(*kellp, payload, "n-" + std::to_string(number++));
}

void deliverOnMany(benchmark::State& state) {
  deliverOnTop(state, 100'000);
}
void deliverOnFew(benchmark::State& state) {
  deliverOnTop(state, 10);
}

BENCHMARK(push)->Name("one text-only push of 2.2 KB, in process");
BENCHMARK(barePush)->Name("one text-only push, bare");
BENCHMARK(deliverOnMany)->Name("one more delivery, 100000 unopened stored")->Iterations(2000);
BENCHMARK(deliverOnFew)->Name("one more delivery, 10 unopened stored")->Iterations(2000);

}  // namespace
}  // namespace VorselKelp::benchmarks
