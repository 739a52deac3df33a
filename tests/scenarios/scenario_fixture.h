// Plays a scenario on the native component: sets it up in a component folder and a folder of
// vCards, and compares the outcome with what the scenario says.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/scenarios/scenario.h"
#include "tests/support/component_fixture.h"

namespace vlout::tests {

class ScenarioFixture : public ComponentFixture {
 protected:
  using ComponentFixture::ComponentFixture;

  void layOut(const std::filesystem::path& file);
  void expectOutcome() const;

  [[nodiscard]] bool actionsLeft() const { return next_ < actions_.size(); }
  // The next action, which is done with.
  const Action& takeAction() { return actions_.at(next_++); }
  [[nodiscard]] const Action& nextAction() const { return actions_.at(next_); }

 private:
  Scenario scenario_;
  std::vector<Action> actions_;
  std::size_t next_ = 0;
};

// All scenarios that can be played here, and their names as test names.
[[nodiscard]] std::vector<std::filesystem::path> scenarioFiles();
[[nodiscard]] std::string scenarioName(const testing::TestParamInfo<std::filesystem::path>& info);

}  // namespace vlout::tests
