#include "outlook/vcard/card_merge.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "outlook/vcard/card_file.h"
#include "text/hash.h"

namespace vlout::outlook::vcard {
namespace {

// The cards of a file; each can be found once, by its content.
class Cards {
 public:
  explicit Cards(std::string_view fileText) : spans_(findCards(fileText).cards) {
    hashes_.reserve(spans_.size());
    for (const CardSpan& span : spans_) {
      byHash_.emplace(text::hashOf(fileText.substr(span.start, span.size)), hashes_.size());
      hashes_.push_back(text::hashOf(fileText.substr(span.start, span.size)));
    }
    isTaken_.resize(spans_.size());
  }

  [[nodiscard]] const std::vector<CardSpan>& spans() const { return spans_; }

  // The card with that content, preferably at that place.
  std::optional<std::size_t> takeAt(std::size_t where, std::uint64_t hash) {
    if (where >= hashes_.size() || hashes_[where] != hash || isTaken_[where]) return std::nullopt;
    isTaken_[where] = true;
    return where;
  }
  std::optional<std::size_t> take(std::uint64_t hash) {
    const auto [begin, end] = byHash_.equal_range(hash);
    const auto found =
        std::find_if(begin, end, [&](const auto& entry) { return !isTaken_[entry.second]; });
    return found == end ? std::nullopt : takeAt(found->second, hash);
  }

 private:
  std::vector<CardSpan> spans_;
  std::vector<std::uint64_t> hashes_;
  std::unordered_multimap<std::uint64_t, std::size_t> byHash_;
  std::vector<bool> isTaken_;
};

}  // namespace

MergedFile mergeCards(std::string_view fileBytes, const CardChanges& changes) {
  MergedFile merged;
  std::string fileText(fileBytes);
  const auto form = convertFile(fileText);
  Cards cards(fileText);
  std::vector<const std::string*> texts(cards.spans().size());
  const auto find = [&](const CardChange& change, auto take) {
    std::optional<std::size_t> card = take(text::hashOf(change.text));
    if (card) return true;  // it is there already
    for (auto hash = change.earlier.rbegin(); hash != change.earlier.rend() && !card; ++hash) {
      card = take(*hash);
    }
    if (!card) return false;
    texts[*card] = &change.text;
    merged.isChanged = true;
    return true;
  };
  // Other cards may have the same content; one that is still in its place comes first.
  std::vector<std::size_t> moved;
  for (const auto& [where, change] : changes) {
    const auto takeThere = [&, at = where](std::uint64_t hash) { return cards.takeAt(at, hash); };
    if (!find(change, takeThere)) moved.push_back(where);
  }
  for (const std::size_t where : moved) {
    const CardChange& change = changes.at(where);
    const auto takeAnywhere = [&](std::uint64_t hash) { return cards.take(hash); };
    if (!find(change, takeAnywhere) && !change.isWritten) merged.lost.push_back(where);
  }
  std::size_t copied = 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (texts[i] == nullptr) continue;
    const CardSpan& span = cards.spans()[i];
    merged.bytes.append(fileText, copied, span.start - copied).append(*texts[i]);
    copied = span.start + span.size;
  }
  merged.bytes.append(fileText, copied);
  if (form) merged.bytes = vcard::fileBytes(merged.bytes, *form);
  return merged;
}

}  // namespace vlout::outlook::vcard
