#include "transfer/person_match.h"

#include "text/ascii.h"
#include "text/trim.h"

namespace vlout::transfer {

Likeness likeness(std::string_view rowMobile, std::string_view rowEmail, const Person& person) {
  int equal = 0;
  int different = 0;
  const auto compare = [&](std::string_view row, std::string_view contact) {
    if (row.empty() || contact.empty()) return;
    ++(text::equalsIgnoringAsciiCase(row, contact) ? equal : different);
  };
  compare(rowMobile, text::digitsOnly(person.mobile));
  compare(rowEmail, text::trim(person.email));
  if (equal > 0) return different == 0 ? Likeness::SameThroughout : Likeness::Same;
  return different == 0 ? Likeness::Possible : Likeness::Different;
}

void PersonMatch::offer(std::size_t candidate, Likeness likeness, bool taken) {
  if (likeness == Likeness::Different) return;
  if (likeness == Likeness::Possible) {
    Possible& possible = taken ? taken_ : free_;
    if (possible.count++ == 0) possible.first = candidate;
    return;
  }
  const bool freed = best_ && best_->taken && !taken;
  if (likeness > bestLikeness_ || (likeness == bestLikeness_ && freed)) {
    best_ = Choice{candidate, taken};
    bestLikeness_ = likeness;
  }
}

std::optional<PersonMatch::Choice> PersonMatch::choose(Evidence evidence) const {
  if (best_ || evidence == Evidence::EqualValue) return best_;
  if (free_.count == 1) return Choice{free_.first, false};
  if (free_.count == 0 && taken_.count == 1) return Choice{taken_.first, true};
  return std::nullopt;
}

}  // namespace vlout::transfer
