#include "ui/frm_group_box.h"

#include <algorithm>
#include <exception>

#include "store/sql.h"
#include "text/ascii.h"
#include "text/trim.h"

namespace vlout::ui {
namespace {

constexpr std::int64_t kRootKey = 1;
constexpr std::int64_t kTrashKey = 1000;
constexpr int kOpenRootImage = 1;
constexpr int kFolderImage = 2;
constexpr int kUnassignedImage = 3;
constexpr int kRootNode = 1;
constexpr int kTrashNode = 2;

bool isUnassigned(std::string_view name) {
  return name == "미지정" || name == "미정";
}

// The number that a text begins with.
std::int64_t leadingNumber(std::string_view text) {
  const auto* const start = text.begin() + (text.starts_with('-') ? 1 : 0);
  const auto* const end = std::find_if_not(start, text.end(), text::isAsciiDigit);
  return text::parseInteger({text.begin(), end}).value_or(0);
}

}  // namespace

frmGroupBox::frmGroupBox(Toolkit& toolkit, Component& component)
    : Form(toolkit), component_(component) {
  caption = "그룹선택";
  width = 4800;
  height = 6000;
  Command1.setText("확인");
  Command2.setText("취소");
  Command7.setText("새로고침");
  Command1.clicked = [this] { choose(); };
  Command2.clicked = [this] {
    forgetChoice();
    unload();
  };
  Command7.clicked = [this] { buildTree(); };
  TreeView1.nodeExpanded = [this](int index) { nodeExpanded(index); };
}

Layout frmGroupBox::layout() {
  using namespace layout;
  return column({control("TreeView1", TreeView1).stretched(1),
                 row({control("Command7", Command7).wide(10).keyed('R'), space(),
                      defaultButton("Command1", Command1).wide(10).keyed('O'),
                      control("Command2", Command2).wide(10).keyed('C')})});
}

void frmGroupBox::load() {
  centreOnScreen();
  forgetChoice();
  buildTree();
}

void frmGroupBox::forgetChoice() {
  WindowResults& results = component_.results();
  results.chosen = false;
  results.groupName.clear();
  results.groupKey = -1;
}

void frmGroupBox::keyPress(int characterCode) {
  if (characterCode == kEscape) unload();
}

// --- the tree -----------------------------------------------------------------------------------

void frmGroupBox::buildTree() {
  TreeView1.clear();
  GroupBox.clear();
  addNode(0, "전체", "1|0", 0);
  addNode(0, "휴지통", "1000|1000", 0);
  const auto rows = component_.connection().query(
      "SELECT folder_name,f_idx,p_idx FROM [tbl_folder] order by f_idx asc");
  // An empty table leaves the trash in the tree; a quirk that is kept.
  if (rows->rowCount() == 0) return;
  for (; !rows->atEnd(); rows->moveNext()) {
    const auto number = [&](std::string_view column) {
      return text::parseInteger(store::nullSafe(rows->field(column))).value_or(0);
    };
    const std::int64_t key = number("f_idx");
    if (key == kRootKey || key == kTrashKey) continue;
    GroupBox.push_back({.done = false,
                        .key = key,
                        .parent = number("p_idx"),
                        .name = std::string(store::nullSafe(rows->field("folder_name")))});
  }
  placeFolders();
  TreeView1.remove(kTrashNode);
  TreeView1.expand(kRootNode);
  showOpening();
}

// Brought into view, but not chosen: only what the user points at can be confirmed.
void frmGroupBox::showOpening() {
  const int node = openAt_ == 0 ? -1 : T_INDEX(openAt_);
  if (node < 0) return;
  for (int above = TreeView1.node(node).parent; above != 0; above = TreeView1.node(above).parent) {
    if (above != kRootNode) TreeView1.expand(above);
  }
}

// Makes passes over the folders that wait for their parent, until one places nothing: the rest are
// orphans or a cycle, and stay out of the tree.
void frmGroupBox::placeFolders() {
  bool placed = true;
  while (placed && !GroupBox.empty()) {
    placed = false;
    for (WaitingFolder& folder : GroupBox) placed = place(folder) || placed;
    std::erase_if(GroupBox, [](const WaitingFolder& folder) { return folder.done; });
  }
}

bool frmGroupBox::place(WaitingFolder& folder) {
  const int parent = T_INDEX(folder.parent);
  if (parent < 0) return false;
  folder.done = true;
  const std::string tag = std::to_string(folder.key) + "|" + std::to_string(folder.parent);
  addNode(parent, folder.name, tag, isUnassigned(folder.name) ? kUnassignedImage : kFolderImage);
  return true;
}

int frmGroupBox::addNode(int parent, const std::string& text, const std::string& tag, int image) {
  return TreeView1.add(parent, {.key = CreateGUID(), .text = text, .tag = tag, .image = image});
}

int frmGroupBox::T_INDEX(std::int64_t folderKey) const {
  for (int i = 1; i <= TreeView1.count(); ++i) {
    if (leadingNumber(TreeView1.node(i).tag) == folderKey) return i;
  }
  return -1;
}

void frmGroupBox::nodeExpanded(int index) {
  TreeView::Node& node = TreeView1.node(index);
  const std::string path = TreeView1.fullPath(index);
  if (node.text == "전체") {
    node.expandedImage = kOpenRootImage;
  } else if (path == "전체/미지정" || path == "전체/미정") {
    node.expandedImage = kUnassignedImage;
  }
}

std::string frmGroupBox::CreateGUID() {
  try {
    std::string digits;
    for (const unsigned byte : toolkit().newGuid()) {
      constexpr std::string_view kDigits = "0123456789ABCDEF";
      digits += kDigits[byte >> 4];
      digits += kDigits[byte & 15U];
    }
    return digits;
  } catch (const std::exception&) {
    toolkit().messageBox(MessageIcon::None, "Error While creating GUID!");
    return {};
  }
}

// --- the choice ---------------------------------------------------------------------------------

void frmGroupBox::choose() {
  if (TreeView1.count() == 0) return;
  const int selected = TreeView1.selected();
  if (selected == 0 || selected == kRootNode) {
    toolkit().messageBox(MessageIcon::Exclamation, "그룹을 선택하여 주십시오.");
    return;
  }
  const TreeView::Node& node = TreeView1.node(selected);
  const std::size_t bar = node.tag.find('|');
  WindowResults& results = component_.results();
  results.groupName = node.text;
  results.groupKey = text::narrowed<std::int32_t>(leadingNumber(node.tag.substr(0, bar)));
  results.groupParent = text::narrowed<std::int32_t>(leadingNumber(node.tag.substr(bar + 1)));
  results.chosen = !text::trimRight(node.text).empty();
  unload();
}

}  // namespace vlout::ui
