#include "outlook/vcard/card_merge.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "outlook/vcard/card_file.h"
#include "text/hash.h"

namespace vlout::outlook::vcard {
namespace {

// The cards of a file, each to be found once by its content.
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

  // The card with that content, where it was if it is still there.
  std::optional<std::size_t> take(std::uint64_t hash, std::size_t where) {
    const bool isThere = where < hashes_.size() && hashes_[where] == hash && !isTaken_[where];
    if (!isThere) {
      const auto [begin, end] = byHash_.equal_range(hash);
      const auto found =
          std::find_if(begin, end, [&](const auto& entry) { return !isTaken_[entry.second]; });
      if (found == end) return std::nullopt;
      where = found->second;
    }
    isTaken_[where] = true;
    return where;
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
  for (const auto& [where, change] : changes) {
    if (cards.take(text::hashOf(change.text), where)) continue;  // it is there already
    std::optional<std::size_t> card;
    for (auto hash = change.earlier.rbegin(); hash != change.earlier.rend() && !card; ++hash) {
      card = cards.take(*hash, where);
    }
    if (card) {
      texts[*card] = &change.text;
      merged.isChanged = true;
    } else {
      merged.others.push_back(firstDisplayName(change.text));
    }
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
