#include "transfer/survey.h"

#include <unordered_map>
#include <utility>

#include "outlook/normalizer.h"
#include "outlook/pairing.h"
#include "store/sql.h"
#include "text/ascii.h"

namespace vlout::transfer {
namespace {

using outlook::Contact;

// In the order of Standing.
constexpr std::array<StandingWords, kStandings> kWords{{
    {{"일치", "in step"}, "in_step"},
    {{"명함이 바뀜", "card changed"}, "card_changed"},
    {{"연락처가 바뀜", "contact changed"}, "contact_changed"},
    {{"충돌", "conflict"}, "conflict"},
    {{"연락처 없는 명함", "card without a contact"}, "never_sent"},
    {{"연락처가 없어진 명함", "card whose contact is gone"}, "contact_gone"},
    {{"명함을 찾을 수 없는 연락처", "contact whose card is gone"}, "card_gone"},
    {{"명함 없는 연락처", "contact without a card"}, "cardless"},
    {{"명함과 짝지을 연락처", "contact to be paired with a card"}, "joinable"},
    {{"한 명함의 다른 연락처", "further contact of one card"}, "double"},
    {{"이름이 다른 짝", "pair whose names differ"}, "name_differs"},
    {{"이름이 같은 명함", "card with the same name"}, "namesake"},
}};

Standing standingOf(const PairState& state) {
  if (state.conflict) return Standing::Conflict;
  if (state.newer == Side::Row) return Standing::CardChanged;
  return state.newer == Side::Contact ? Standing::ContactChanged : Standing::InStep;
}

}  // namespace

const StandingWords& wordsOf(Standing standing) {
  return kWords.at(static_cast<std::size_t>(standing));
}

void Survey::add(Standing standing, Surveyed found) {
  found_.at(static_cast<std::size_t>(standing)).push_back(std::move(found));
}

RunEnd Survey::run() {
  openFolder();
  reportFolderNotices();
  surveyNamesakes();
  const RunEnd end = forEachContact(
      nullptr, Stopping::Possible,
      [&](Contact& contact, std::size_t position) { surveyContact(contact, position); });
  if (end == RunEnd::Completed) surveyCardsAlone();
  return end;
}

void Survey::surveyContact(Contact& contact, std::size_t position) {
  ++contactCount_;
  const std::string name = outlook::joinedName(contact);
  Surveyed found{.person = name, .contact = name, .position = position};
  const auto key = outlook::keyOf(contact);
  if (!key) {
    surveyByPerson(contact, std::move(found));
    return;
  }
  const auto carried = list_.find(*key);
  found.card = *key;
  if (!carried) {
    add(Standing::CardGone, std::move(found));
    return;
  }
  const WorkListRow& row = list_.row(*carried);
  found.card = row.id;
  found.person = row.name;
  if (isDouble(position) || mayBeCopy(row, contact, position)) {
    add(Standing::Double, std::move(found));
    return;
  }
  const PairedRow paired(list_, *carried);
  record_ = row.name;
  surveyPair(row, contact, std::move(found));
}

void Survey::surveyPair(const WorkListRow& row, Contact& contact, Surveyed pair) {
  const Standing standing = standingOf(
      classifyPair(stampsOf(row), contact.lastModificationTime(), ConflictTest::Crosswise));
  if (!hasNameOf(row, contact)) add(Standing::NameDiffers, pair);
  if (standing == Standing::Conflict) {
    pair.differences = differingFields(*store::readCard(connection_, row.id), contact);
  }
  add(standing, std::move(pair));
}

void Survey::surveyByPerson(Contact& contact, Surveyed alone) {
  const auto match = findByPerson(contact);
  if (!match) {
    add(Standing::Cardless, std::move(alone));
    return;
  }
  const WorkListRow& row = list_.row(match->candidate);
  alone.card = row.id;
  alone.person = row.name;
  add(match->taken ? Standing::Double : Standing::Joinable, std::move(alone));
  if (!match->taken) list_.remove(match->candidate);
}

void Survey::surveyCardsAlone() {
  for (const WorkList::Position position : list_.remaining()) {
    const WorkListRow& row = list_.row(position);
    const bool sentBefore = text::parseDateTime(row.lastSync).has_value();
    add(sentBefore ? Standing::ContactGone : Standing::NeverSent,
        {.card = row.id, .person = row.name});
  }
}

void Survey::surveyNamesakes() {
  const auto all = list_.remaining();
  std::vector<std::string> names;
  names.reserve(all.size());
  std::unordered_map<std::string_view, std::size_t> counts;
  for (const auto position : all) {
    ++counts[names.emplace_back(outlook::normalize(list_.row(position).name))];
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    const WorkListRow& row = list_.row(all[i]);
    if (!names[i].empty() && counts[names[i]] > 1) {
      add(Standing::Namesake, {.card = row.id, .person = row.name});
    }
  }
}

// --- the window ---------------------------------------------------------------------------------

std::size_t SurveyWindow::addResult(std::string_view text) {
  last_ = text;
  return 0;
}

// The headings of phases end with other states.
void SurveyWindow::setResultCell(std::size_t row, std::size_t column, std::string_view text) {
  static_cast<void>(row);
  constexpr std::size_t kState = 2;
  if (column == kState && (text == "실패" || text == "제외")) report_(last_, text);
}

void SurveyWindow::message(MessageIcon icon, std::string_view text) {
  static_cast<void>(icon);
  report_(text, "");
}

}  // namespace vlout::transfer
