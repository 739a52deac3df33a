// The group picker: a modal window in which the user picks one folder from the folder tree. It
// leaves its choice in the component's window results, which the caller resets before and reads
// afterwards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ui/component.h"
#include "ui/controls.h"
#include "ui/form.h"

namespace vlout::ui {

class frmGroupBox : public Form {
 public:
  frmGroupBox(Toolkit& toolkit, Component& component);

  void keyPress(int characterCode) override;
  [[nodiscard]] Layout layout() override;

  // The folder to open the picker at; without it, only the root is expanded.
  void openAt(std::int64_t folderKey) { openAt_ = folderKey; }

  // The 1-based index of the first node whose tag begins with that folder key, or -1.
  [[nodiscard]] int T_INDEX(std::int64_t folderKey) const;

  TreeView TreeView1;
  Button Command1, Command2, Command7;

 protected:
  void load() override;

 private:
  // A row of the scratch list of folders still to be placed.
  struct WaitingFolder {
    bool done = false;
    std::int64_t key = 0;
    std::int64_t parent = 0;
    std::string name;
  };

  void buildTree();
  void placeFolders();
  void showOpening();
  bool place(WaitingFolder& folder);
  int addNode(int parent, const std::string& text, const std::string& tag, int image);
  void nodeExpanded(int index);
  void choose();
  void forgetChoice();
  [[nodiscard]] std::string CreateGUID();

  Component& component_;
  std::int64_t openAt_ = 0;
  std::vector<WaitingFolder> GroupBox;
};

}  // namespace vlout::ui
