// Finds out what is linked with what: sorts each card and each contact by what a two-way sync would
// do with it, using the transfers' own rules. Nothing is written.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/language.h"
#include "transfer/pair_sides.h"
#include "transfer/transfer.h"

namespace vlout::transfer {

// How a card or contact stands, in the order in which it is reported.
enum class Standing {
  InStep,
  CardChanged,
  ContactChanged,
  Conflict,
  NeverSent,    // a card without a contact
  ContactGone,  // a card that had one
  CardGone,     // a contact whose number no card has
  Cardless,     // a contact without a number whose person is not among the cards
  Joinable,     // a contact without a number whose person is among the cards: a transfer joins them
  Double,       // a contact of a card that already has one
  NameDiffers,  // a pair that is also listed under one of the first four
  Namesake,     // a card with the same name as another
};
inline constexpr std::size_t kStandings = 12;

// What users see, and the word that scripts read.
struct StandingWords {
  text::Words caption;
  std::string_view key;
};
[[nodiscard]] const StandingWords& wordsOf(Standing standing);

// One card, contact or pair.
struct Surveyed {
  std::string card{};                        // its number; empty for a contact without a card
  std::string person{};                      // the card's name, else the contact's
  std::string contact{};                     // the contact's name, where there is one
  std::size_t position{};                    // of the contact in the folder; 0 where there is none
  std::vector<ComparedField> differences{};  // of a conflict
};

// The window of a survey: passes on what could not be read, with the state of its line, and ignores
// mere progress.
class SurveyWindow : public RunWindow {
 public:
  using Report = std::function<void(std::string_view line, std::string_view state)>;
  // `yielding` answers whether to stop.
  SurveyWindow(Report report, std::function<bool()> yielding)
      : report_(std::move(report)), yielding_(std::move(yielding)) {}

  std::size_t addResult(std::string_view text) override;
  void setResultCell(std::size_t row, std::size_t column, std::string_view text) override;
  void selectResult(std::size_t row) override { static_cast<void>(row); }
  void showProgress(bool visible) override { static_cast<void>(visible); }
  void setProgress(int percent) override { static_cast<void>(percent); }
  void enableRunButton(bool enabled) override { static_cast<void>(enabled); }
  void message(MessageIcon icon, std::string_view text) override;
  [[nodiscard]] bool yield() override { return yielding_(); }

 private:
  Report report_;
  std::function<bool()> yielding_;
  std::string last_;
};

class Survey : private Transfer {
 public:
  // `list` must be loaded with all cards. `window` gets a line for each record that cannot be read,
  // and may stop the survey.
  Survey(store::Connection& connection, outlook::ContactStore& contacts, WorkList& list,
         RunWindow& window)
      : Transfer(connection, contacts, list, window) {}

  // Throws ContactStoreError or DatabaseError when the folder or the database is lost as a whole.
  RunEnd run();

  [[nodiscard]] const std::vector<Surveyed>& of(Standing standing) const {
    return found_.at(static_cast<std::size_t>(standing));
  }
  [[nodiscard]] std::size_t contacts() const { return contactCount_; }

 private:
  void surveyContact(outlook::Contact& contact, std::size_t position);
  void surveyPair(const WorkListRow& row, outlook::Contact& contact, Surveyed pair);
  void surveyByPerson(outlook::Contact& contact, Surveyed alone);
  void surveyCardsAlone();
  void surveyNamesakes();
  void add(Standing standing, Surveyed found);

  std::array<std::vector<Surveyed>, kStandings> found_;
  std::size_t contactCount_ = 0;
};

}  // namespace vlout::transfer
