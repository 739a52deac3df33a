#include "transfer/survey.h"

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
    {"일치", "in_step"},
    {"명함이 바뀜", "card_changed"},
    {"연락처가 바뀜", "contact_changed"},
    {"충돌", "conflict"},
    {"연락처 없는 명함", "never_sent"},
    {"연락처가 없어진 명함", "contact_gone"},
    {"명함을 찾을 수 없는 연락처", "card_gone"},
    {"명함 없는 연락처", "cardless"},
    {"명함과 짝지을 연락처", "joinable"},
    {"한 명함의 다른 연락처", "double"},
    {"이름이 다른 짝", "name_differs"},
    {"이름이 같은 명함", "namesake"},
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
  surveyNamesakes(list_.remaining());
  const RunEnd end = forEachContact(
      nullptr, Stopping::Possible,
      [&](Contact& contact, std::size_t position) { surveyContact(contact, position); });
  if (end == RunEnd::Completed) surveyCardsAlone();
  return end;
}

void Survey::surveyContact(Contact& contact, std::size_t position) {
  ++contactCount_;
  const std::string name = outlook::joinedName(contact);
  const auto key = outlook::keyOf(contact);
  const auto carried = key ? list_.find(*key) : std::nullopt;
  if (!carried) {
    if (key)
      add(Standing::CardGone,
          {.card = *key, .person = name, .contact = name, .position = position});
    if (!key) surveyByPerson(contact, position);
    return;
  }
  const WorkListRow& row = list_.row(*carried);
  if (isDouble(position) || mayBeCopy(row, contact, position)) {
    add(Standing::Double,
        {.card = row.id, .person = row.name, .contact = name, .position = position});
    return;
  }
  const PairedRow paired(list_, *carried);
  record_ = row.name;
  surveyPair(row, contact, position);
}

void Survey::surveyPair(const WorkListRow& row, Contact& contact, std::size_t position) {
  const Standing standing = standingOf(
      classifyPair(stampsOf(row), contact.lastModificationTime(), ConflictTest::Crosswise));
  Surveyed pair{.card = row.id,
                .person = row.name,
                .contact = outlook::joinedName(contact),
                .position = position};
  if (!hasNameOf(row, contact)) add(Standing::NameDiffers, pair);
  if (standing == Standing::Conflict) {
    pair.differences = differingFields(*store::readCard(connection_, row.id), contact);
  }
  add(standing, std::move(pair));
}

void Survey::surveyByPerson(Contact& contact, std::size_t position) {
  const std::string name = outlook::joinedName(contact);
  const auto match = findByPerson(contact);
  if (!match) {
    add(Standing::Cardless, {.person = name, .contact = name, .position = position});
    return;
  }
  const WorkListRow& row = list_.row(match->candidate);
  add(match->taken ? Standing::Double : Standing::Joinable,
      {.card = row.id, .person = row.name, .contact = name, .position = position});
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

void Survey::surveyNamesakes(const std::vector<WorkList::Position>& all) {
  std::unordered_map<std::string, std::size_t> names;
  for (const auto position : all) ++names[outlook::normalize(list_.row(position).name)];
  for (const auto position : all) {
    const WorkListRow& row = list_.row(position);
    const std::string name = outlook::normalize(row.name);
    if (!name.empty() && names[name] > 1) {
      add(Standing::Namesake, {.card = row.id, .person = row.name});
    }
  }
}

}  // namespace vlout::transfer
