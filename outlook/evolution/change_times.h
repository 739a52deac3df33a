// When the contacts of an address book last changed, and which card each belongs to. Servers do not
// tell the former and may lose the latter, so both are kept in the component folder, by UID, with
// what a run needs to know of a contact's text, so that an unchanged one is not read. The store
// looks each contact up here, and reports each of its own saves.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vlout::outlook::evolution {

// In Unix time.
struct ChangeTime {
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;

  auto operator<=>(const ChangeTime&) const = default;  // NOLINT(modernize-use-nullptr)
  [[nodiscard]] static ChangeTime now();
};

class ChangeTimes {
 public:
  // Reads the table of a book; a missing or damaged table knows nothing. `keeps` is false for a
  // table that must not be written. Throws std::system_error.
  ChangeTimes(const std::filesystem::path& componentFolder, const std::string& bookUid, bool keeps);

  struct Known {
    ChangeTime time{};
    bool isGroup = false;             // a list of contacts
    std::optional<std::string> vlid;  // the card in its text, or that the component wrote it for
  };
  // What is known of a contact as it was found; nothing if its text is no contact. If its content
  // is the same as last time, it has not changed; otherwise it changed at its REV, if that is later
  // than the time kept, or just now.
  std::optional<Known> found(const std::string& uid, const std::string& text);

  // To be called before and after each save by the component, which counts as a change at that
  // time. After a kill in between, the contact counts as saved if it is found so. Both return the
  // fingerprint of the content.
  std::uint64_t saving(const std::string& uid, const std::string& text,
                       const std::optional<std::string>& vlid, ChangeTime time);
  std::uint64_t saved(const std::string& uid, const std::string& stored,
                      const std::optional<std::string>& vlid, ChangeTime time);

  // Writes down what `found` has learnt.
  void flush();

 private:
  struct Entry {
    std::uint64_t text = 0;  // fingerprint of the very text; 0 where it is not known
    std::uint64_t content = 0;
    ChangeTime time{};
    std::string vlid{};  // that the component wrote it for; empty for none
    bool isGroup = false;
    std::optional<std::string> written{};  // the card in its text
  };
  struct Contact {
    std::optional<Entry> last;
    std::optional<Entry> pending;
  };

  void read();
  void readLine(std::string_view line);
  static bool look(const std::string& text, Entry& entry);
  void append(char kind, const std::string& uid, const Entry& entry);
  [[nodiscard]] static std::string line(char kind, const std::string& uid, const Entry& entry);

  std::filesystem::path file_;
  bool keeps_;
  std::unordered_map<std::string, Contact> contacts_;
  bool changed_ = false;
};

}  // namespace vlout::outlook::evolution
