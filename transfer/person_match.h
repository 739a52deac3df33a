// Decides whether a row and a contact without a usable key are the same person, and which of
// several rows of the name it is. Export and import share this rule.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vlout::transfer {

// What a contact without a usable key is looked up by.
struct Person {
  std::string name{};
  std::string mobile{};  // as the contact holds it
  std::string email{};
};

// What mobile number and e-mail address tell about two sides of the same name, from the least to
// the most likely.
enum class Likeness {
  Different,       // a value that both have differs, and none is equal
  Possible,        // there is no value that both have
  Same,            // one value is equal, which outweighs that the other differs
  SameThroughout,  // one value is equal, and none differs
};

// `rowMobile` has digits only, `rowEmail` no blanks around it. Letter case does not matter.
[[nodiscard]] Likeness likeness(std::string_view rowMobile, std::string_view rowEmail,
                                const Person& person);

// Which evidence a match needs besides the name.
enum class Evidence {
  NameAlone,   // none, as long as nothing speaks against it
  EqualValue,  // an equal number or address
};

// Chooses among the rows of one name: the row that is most alike or, if no value is equal, the only
// possible one, and none if there are several. A row that already has a contact is chosen only if
// no other row is as much alike.
class PersonMatch {
 public:
  struct Choice {
    std::size_t candidate;
    bool taken;  // it already has a contact
  };

  void offer(std::size_t candidate, Likeness likeness, bool taken);
  [[nodiscard]] std::optional<Choice> choose(Evidence evidence) const;

 private:
  struct Possible {
    std::size_t first = 0;
    int count = 0;
  };

  std::optional<Choice> best_;
  Likeness bestLikeness_ = Likeness::Possible;
  Possible free_;
  Possible taken_;
};

}  // namespace vlout::transfer
