// Shows a card and its contact side by side, read-only. The main window and the overview open it
// for a line of their lists, if the component has a desk.
#pragma once

#include <memory>
#include <string>

#include "ui/component.h"
#include "ui/controls.h"
#include "ui/form.h"

namespace vlout::ui {

class frmPair : public Form {
 public:
  frmPair(Toolkit& toolkit, Component& component);

  // Shows the card of that number, if there is one, and the contact at that position of the folder,
  // if it still has that name; without a position, the contact that carries the number. Throws
  // DatabaseError and ContactStoreError.
  void open(const std::string& card, std::size_t position = 0, const std::string& name = "");

  void keyPress(int characterCode) override;
  [[nodiscard]] Layout layout() override;

  Label Label1;
  ListView ListView1;
  Button Command1;

 protected:
  void load() override;

 private:
  void fill(const std::string& card, std::size_t position, const std::string& name);
  [[nodiscard]] std::unique_ptr<outlook::Contact> contactOf(const std::string& card,
                                                            std::size_t position,
                                                            const std::string& name);

  Component& component_;
};

}  // namespace vlout::ui
