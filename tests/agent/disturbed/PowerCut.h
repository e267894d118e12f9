#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace VorselKelp::agent {

/// A call that changed something on the disk, as the injector has recorded it.
struct RecordedCall {
  std::string effect;  ///< "write", "resize", "sync", "make", "remove", "rename"
  std::size_t offset = 0;
  std::size_t size = 0;
  std::string path;
  std::string bytes;       ///< written, or a file's new name
  std::uintmax_t end = 0;  ///< of its record, in the records' file
};

std::vector<RecordedCall> readCalls(const std::string& path);

std::string contentOf(const std::string& path);

/// What a disk may have of a folder when the power fails. Of what was written to a file since its last sync
/// each block of 4 KiB may be missing. The names of files come to the disk in the order in which they
/// changed, a file's first one at the latest when it is synchronized, all with a sync of a folder.
class PowerCut {
 public:
  /// What is there now, safe on the disk.
  explicit PowerCut(std::string folder);

  /// False when it does something that is not known here.
  bool apply(const RecordedCall& call);
  /// Nothing can be lost of the files whose names begin so.
  [[nodiscard]] bool isSafe(const std::string& path) const;

  /// How many states there are to try: all of them where they are few, else `samples` that are drawn.
  [[nodiscard]] unsigned states(unsigned samples) const;
  /// Puts one of them, under its number, in the place of what is in `target`.
  void put(unsigned state, const std::string& target);
  /// The same with nothing lost.
  void putAll(const std::string& target) const;

 private:
  struct Change {
    std::size_t offset;
    std::optional<std::string> bytes;  ///< absent: the file ends here
  };
  struct File {
    std::string content;
    std::vector<Change> changes;
    std::size_t made = 0;  ///< how many names had changed with its first one
  };
  using Names = std::map<std::string, std::shared_ptr<File>>;
  struct NameChange {
    std::string from;  ///< empty: a file is made
    std::string to;    ///< empty: it is removed
    std::shared_ptr<File> file;
  };

  static void apply(std::string& content, const Change& change);
  static void apply(Names& names, const NameChange& change);
  void note(NameChange change);
  void synchronizeNames(std::size_t count);
  [[nodiscard]] std::size_t combinations() const;
  [[nodiscard]] std::vector<std::shared_ptr<File>> changedFiles() const;
  void write(const Names& names, const std::map<const File*, std::string>& contents,
             const std::string& target) const;

  const std::string folder_;
  Names names_;                      ///< as the processes see them
  Names safeNames_;                  ///< as they are on the disk for certain
  std::vector<NameChange> pending_;  ///< between the two
  std::size_t safeCount_ = 0;        ///< how many changes of names are on the disk
  std::mt19937 random_{7};
};

}  // namespace VorselKelp::agent
