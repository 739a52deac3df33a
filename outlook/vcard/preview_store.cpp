#include "outlook/vcard/preview_store.h"

#include <ctime>
#include <map>

#include "outlook/vcard/preview_contact.h"

namespace vlout::outlook::vcard {
namespace {

// The folder, with its saves in memory. It refuses what the real one refuses.
class PreviewFolder : public Folder {
 public:
  using Folder::Folder;

  std::vector<CardFile> cardFiles() override {
    std::vector<CardFile> files = findCardFiles();
    for (CardFile& file : files) {
      const auto saved = saved_.empty() ? saved_.end() : saved_.find(keyOf(targetOf(file.name)));
      if (saved != saved_.end()) file.sight = {saved->second.state};
    }
    for (const std::string& name : new_) files.push_back({name, {saved_.at(name).state}});
    return files;
  }

  std::optional<FileState> read(const std::string& name, std::string& text) override {
    const auto saved = saved_.empty() ? saved_.end() : saved_.find(keyOf(targetOf(name)));
    if (saved == saved_.end()) return Folder::read(name, text);
    text = saved->second.text;
    return saved->second.state;
  }

  FileState replace(const std::string& name, std::string_view text,
                    const std::optional<FileState>& before, bool keepSecond,
                    const std::string& row) override {
    static_cast<void>(row);
    const Target target = targetOf(name);
    const std::string key = keyOf(target);
    const auto saved = saved_.find(key);
    if (before && saved == saved_.end()) requireTarget(target, *before);
    if (before && saved != saved_.end() && saved->second.state != *before) failAsChanged(name);
    if (!before) new_.push_back(name);

    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    // No file on the disk has such a number.
    FileState state{~std::uint64_t{0} - ++saves_, static_cast<std::int64_t>(text.size()),
                    now.tv_sec, static_cast<std::int32_t>(now.tv_nsec)};
    if (keepSecond && before) {
      state.seconds = before->seconds;
      state.nanoseconds = nextInSecond(before->nanoseconds);
    }
    saved_.insert_or_assign(key, Saved{std::string(text), state});
    return state;
  }

  void gather(const SavedCard& save, const FileState& before) override {
    const Target target = targetOf(save.file);
    const auto saved = saved_.find(keyOf(target));
    if (saved == saved_.end()) requireTarget(target, before);
  }
  FileState rewrite(const std::string& name, std::string_view text,
                    const FileState& before) override {
    return replace(name, text, before, true, "");
  }
  std::optional<JournalFiles> gathered() override {
    return isCompleted_ ? std::nullopt : Folder::gathered();
  }
  void gatheredWritten(const std::string&, const std::vector<std::size_t>&) override {}
  void dropGathered() override { isCompleted_ = true; }

  void flush() override {}

 private:
  struct Saved {
    std::string text;
    FileState state;
  };

  static std::string keyOf(const Target& target) {
    return target.folder.empty() ? target.name : target.folder + "/" + target.name;
  }
  void requireTarget(const Target& target, const FileState& before) const {
    static_cast<void>(target.folder.empty()
                          ? requireReplaceable(target.name, before)
                          : Folder(target.folder).requireReplaceable(target.name, before));
  }

  std::map<std::string, Saved> saved_;
  std::vector<std::string> new_;
  std::uint64_t saves_ = 0;
  bool isCompleted_ = false;  // what an earlier run had gathered
};

}  // namespace

PreviewStore::PreviewStore(std::string folder, FieldChanged changed, std::filesystem::path index)
    : VCardStore(std::move(folder),
                 [](const std::string& path) { return std::make_unique<PreviewFolder>(path); },
                 {.file = std::move(index), .isReadOnly = true}),
      changed_(std::move(changed)) {}

std::unique_ptr<Contact> PreviewStore::item(std::size_t index) {
  requireItem(index);
  return std::make_unique<PreviewContact>(*this, index, changed_);
}

}  // namespace vlout::outlook::vcard
