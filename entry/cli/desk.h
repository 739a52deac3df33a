// What the windows on Linux offer around the transfers (ui/desk.h), for a component folder and its
// history.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "ui/desk.h"

namespace vlout::entry::cli {

class LinuxDesk : public ui::Desk {
 public:
  // `whileWaiting` is called now and then while an address book of the desktop is waited for.
  LinuxDesk(std::filesystem::path folder, std::filesystem::path contacts,
            std::function<void()> whileWaiting)
      : folder_(std::move(folder)),
        contacts_(std::move(contacts)),
        whileWaiting_(std::move(whileWaiting)),
        shows_(readsShown()) {}

  [[nodiscard]] std::filesystem::path folder() const override { return folder_; }
  [[nodiscard]] Place contacts() const override;
  [[nodiscard]] std::string objection() const override;
  [[nodiscard]] std::vector<Place> places() override;
  void moveTo(const std::filesystem::path& folder, const std::filesystem::path& contacts) override;
  [[nodiscard]] bool isMoving() const override { return next_.has_value(); }
  [[nodiscard]] bool& showsPictures() override { return shows_; }
  void saveOptions() override;
  [[nodiscard]] std::vector<ui::PastRun> runs() override;
  [[nodiscard]] std::vector<RunDetail> detailsOf(int run) override;
  [[nodiscard]] std::unique_ptr<ui::UndoPlan> planUndo(int run) override;

  // What `moveTo` was given: a component folder and its contacts; empty contacts mean those of its
  // last run.
  struct Move {
    std::filesystem::path folder;
    std::filesystem::path contacts;
  };
  [[nodiscard]] const std::optional<Move>& next() const { return next_; }

 private:
  [[nodiscard]] bool readsShown() const;

  std::filesystem::path folder_;
  std::filesystem::path contacts_;
  std::function<void()> whileWaiting_;
  bool shows_;
  std::optional<Move> next_;
};

}  // namespace vlout::entry::cli
