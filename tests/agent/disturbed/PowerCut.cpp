#include "agent/disturbed/PowerCut.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace VorselKelp::agent {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t block = 4096;
constexpr std::size_t fewStates = 64;

/// What maps a database's log is made anew from it.
bool counts(const std::string& path, const std::string& folder) {
  return (path == folder || path.starts_with(folder + "/")) && !path.ends_with("-shm");
}

}  // namespace

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

std::vector<RecordedCall> readCalls(const std::string& path) {
  std::vector<RecordedCall> calls;
  std::ifstream stream(path, std::ios::binary);
  for (RecordedCall call; stream >> call.effect >> call.offset >> call.size && stream.get();) {
    std::getline(stream, call.path);
    call.bytes.resize(call.size);
    stream.read(call.bytes.data(), static_cast<std::streamsize>(call.size));
    stream.get();
    call.end = static_cast<std::uintmax_t>(stream.tellg());
    calls.push_back(call);
  }
  return calls;
}

PowerCut::PowerCut(std::string folder) : folder_(std::move(folder)) {
  for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
    const auto path = entry.path().string();
    if (entry.is_regular_file() && counts(path, folder_))
      names_[path] = std::make_shared<File>(File{contentOf(path), {}});
  }
  safeNames_ = names_;
}

void PowerCut::apply(std::string& content, const Change& change) {
  const auto end = change.offset + (change.bytes ? change.bytes->size() : 0);
  if (!change.bytes || content.size() < end) content.resize(end, '\0');
  if (change.bytes) content.replace(change.offset, change.bytes->size(), *change.bytes);
}

void PowerCut::apply(Names& names, const NameChange& change) {
  if (!change.from.empty()) names.erase(change.from);
  if (!change.to.empty()) names[change.to] = change.file;
}

void PowerCut::note(NameChange change) {
  apply(names_, change);
  pending_.push_back(std::move(change));
}

void PowerCut::synchronizeNames(std::size_t count) {
  if (count <= safeCount_) return;
  const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(count - safeCount_);
  std::for_each(pending_.begin(), end, [this](const auto& change) { apply(safeNames_, change); });
  pending_.erase(pending_.begin(), end);
  safeCount_ = count;
}

bool PowerCut::apply(const RecordedCall& call) {
  if (!counts(call.path, folder_)) return true;
  const auto found = names_.find(call.path);
  const auto file = found == names_.end() ? nullptr : found->second;
  if (call.effect == "make") {
    auto made = std::make_shared<File>();
    made->made = safeCount_ + pending_.size() + 1;
    note({{}, call.path, std::move(made)});
  } else if (call.effect == "sync") {
    // One that has no name any more is nobody's; what is none of the files is a folder.
    if (!file && !call.path.ends_with(" (deleted)")) synchronizeNames(safeCount_ + pending_.size());
    if (!file) return true;
    for (const auto& change : std::exchange(file->changes, {})) apply(file->content, change);
    synchronizeNames(file->made);
  } else if (call.effect == "write") {
    for (std::size_t from = 0; file && from < call.size;) {
      const auto size = std::min(call.size - from, block - (call.offset + from) % block);
      file->changes.push_back({call.offset + from, call.bytes.substr(from, size)});
      from += size;
    }
  } else if (call.effect == "resize") {
    if (file) file->changes.push_back({call.offset, std::nullopt});
  } else if (call.effect == "remove") {
    if (file) note({call.path, {}, file});
  } else if (call.effect == "rename") {
    if (file) note({call.path, call.bytes, file});
  } else {
    return false;
  }
  return true;
}

bool PowerCut::isSafe(const std::string& path) const {
  return pending_.empty() && std::ranges::all_of(names_, [&](const auto& each) {
           return !each.first.starts_with(path) || each.second->changes.empty();
         });
}

/// Also those whose removal may be lost.
std::vector<std::shared_ptr<PowerCut::File>> PowerCut::changedFiles() const {
  std::vector<std::shared_ptr<File>> found;
  std::set<const File*> known;
  const auto add = [&](const std::shared_ptr<File>& file) {
    if (!file->changes.empty() && known.insert(file.get()).second) found.push_back(file);
  };
  for (const auto& [name, file] : safeNames_) add(file);
  for (const auto& change : pending_) add(change.file);
  return found;
}

/// What can be lost and what can be kept, in all combinations.
std::size_t PowerCut::combinations() const {
  std::size_t changes = 0;
  for (const auto& file : changedFiles()) changes += file->changes.size();
  return (pending_.size() + 1) << std::min(changes, std::size_t{16});
}

unsigned PowerCut::states(unsigned samples) const {
  const auto all = combinations();
  return all <= fewStates ? static_cast<unsigned>(all) : samples;
}

void PowerCut::put(unsigned state, const std::string& target) {
  const bool drawn = combinations() > fewStates;
  // Mostly little is lost: a log is read up to the first gap.
  const auto lost = std::pow(std::uniform_real_distribution(0.0, 1.0)(random_), 6);
  const auto options = static_cast<unsigned>(pending_.size() + 1);
  auto bits = state / options;
  const auto stays = [&] {
    if (drawn) return std::uniform_real_distribution(0.0, 1.0)(random_) >= lost;
    const bool bit = (bits & 1) != 0;
    bits >>= 1;
    return bit;
  };
  const auto count = drawn ? std::uniform_int_distribution(0U, options - 1)(random_) : state % options;
  std::map<const File*, std::string> contents;
  for (const auto& file : changedFiles()) {
    auto& content = contents[file.get()] = file->content;
    for (const auto& change : file->changes) {
      if (stays()) apply(content, change);
    }
  }
  auto names = safeNames_;
  std::for_each(pending_.begin(), pending_.begin() + count,
                [&](const auto& change) { apply(names, change); });
  write(names, contents, target);
}

void PowerCut::putAll(const std::string& target) const {
  std::map<const File*, std::string> contents;
  for (const auto& [name, file] : names_) {
    auto& content = contents[file.get()] = file->content;
    for (const auto& change : file->changes) apply(content, change);
  }
  write(names_, contents, target);
}

void PowerCut::write(const Names& names, const std::map<const File*, std::string>& contents,
                     const std::string& target) const {
  fs::remove_all(target);
  fs::create_directories(target);
  for (const auto& [name, file] : names) {
    const auto path = target + name.substr(folder_.size());
    fs::create_directories(fs::path(path).parent_path());
    const auto changed = contents.find(file.get());
    std::ofstream(path, std::ios::binary) << (changed == contents.end() ? file->content : changed->second);
  }
}

}  // namespace VorselKelp::agent
