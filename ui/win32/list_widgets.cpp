#include "ui/win32/list_widgets.h"

#include <utility>

#include "ui/win32/picture_bitmap.h"
#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

using windows::wide;

class ListWidget : public Widget {
 public:
  explicit ListWidget(const WidgetPlace& place)
      : Widget(place, WC_LISTVIEWW,
               WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER,
               WS_EX_CLIENTEDGE) {
    // The tip shows a line that its column cuts off.
    send(LVM_SETEXTENDEDLISTVIEWSTYLE, 0,
         LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER);
    list().events = {
        .rowAdded = [this](std::size_t row) { addRow(row); },
        .cellSet = [this](std::size_t row, std::size_t column) { setCell(row, column); },
        .rowSelected = [this](std::size_t row) { select(row); },
        .cleared = [this] { send(LVM_DELETEALLITEMS); }};
    addColumns();
    for (std::size_t row = 0; row < list().rows().size(); ++row) {
      addRow(row);
      for (std::size_t column = 1; column < list().columns().size(); ++column) setCell(row, column);
    }
  }
  ~ListWidget() override { list().events = {}; }
  ListWidget(const ListWidget&) = delete;
  ListWidget& operator=(const ListWidget&) = delete;

  void setLook(const Look& look) override {
    Widget::setLook(look);
    columnsWidth_ = 0;
    for (std::size_t i = 1; i < list().columns().size(); ++i) {
      const int width = look.twips(list().columns()[i].width);
      send(LVM_SETCOLUMNWIDTH, i, width);
      columnsWidth_ += width;
    }
    scrollBar_ = look.pixels(24);
  }
  [[nodiscard]] Size leastSize(const Look& look) const override {
    int width = look.pixels(24);
    for (const ListView::Column& each : list().columns()) width += look.twips(each.width);
    return {width, (part().lines + 2) * (look.lineHeight() + look.pixels(3))};
  }
  // The columns keep their widths; what the list has more goes to the first, which holds the texts.
  void placed(int width) override {
    send(LVM_SETCOLUMNWIDTH, 0, width - columnsWidth_ - scrollBar_);
  }

 private:
  [[nodiscard]] ListView& list() const { return static_cast<ListView&>(*part().control); }

  void addColumns() const {
    for (std::size_t i = 0; i < list().columns().size(); ++i) {
      std::wstring title = wide(list().columns()[i].title);
      LVCOLUMNW column{};
      column.mask = LVCF_TEXT;
      column.pszText = title.data();
      send(LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
  }
  void addRow(std::size_t row) const {
    std::wstring text = wide(list().cell(row, 0));
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(row);
    item.pszText = text.data();
    send(LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    send(LVM_ENSUREVISIBLE, row, FALSE);
  }
  void setCell(std::size_t row, std::size_t column) const {
    std::wstring text = wide(list().cell(row, column));
    LVITEMW item{};
    item.iSubItem = static_cast<int>(column);
    item.pszText = text.data();
    send(LVM_SETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
  }
  void select(std::size_t row) const {
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = LVIS_SELECTED | LVIS_FOCUSED;
    send(LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    send(LVM_ENSUREVISIBLE, row, FALSE);
  }

  int columnsWidth_ = 0;  // of all but the first
  int scrollBar_ = 0;
};

class TreeWidget : public Widget {
 public:
  explicit TreeWidget(const WidgetPlace& place)
      : Widget(place, WC_TREEVIEWW,
               WS_TABSTOP | TVS_HASLINES | TVS_LINESATROOT | TVS_HASBUTTONS | TVS_SHOWSELALWAYS,
               WS_EX_CLIENTEDGE) {}
  ~TreeWidget() override {
    send(TVM_SETIMAGELIST, TVSIL_NORMAL, 0);
    if (images_ != nullptr) ImageList_Destroy(images_);
  }
  TreeWidget(const TreeWidget&) = delete;
  TreeWidget& operator=(const TreeWidget&) = delete;

  void setLook(const Look& look) override {
    Widget::setLook(look);
    const int size = look.pixels(16);
    const HIMAGELIST images = ImageList_Create(size, size, ILC_COLOR32, 3, 0);
    for (const Picture picture : {Picture::OpenRoot, Picture::Folder, Picture::UnassignedFolder}) {
      ImageList_Add(images, bitmapOf(picture, size).get(), nullptr);
    }
    send(TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images));
    if (images_ != nullptr) ImageList_Destroy(images_);
    images_ = images;
  }
  [[nodiscard]] Size leastSize(const Look& look) const override {
    return {look.pixels(240), look.pixels(200)};
  }

  void mirror() override {
    Widget::mirror();
    // A tree changes node by node; it is shown when the form has done with it.
    if (!stale_) PostMessageW(GetParent(window()), kRefresh, 0, reinterpret_cast<LPARAM>(this));
    stale_ = true;
  }
  void refresh() override {
    stale_ = false;
    mirroring_ = true;
    items_.assign(static_cast<std::size_t>(tree().count()) + 1, TVI_ROOT);
    send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    for (int i = 1; i <= tree().count(); ++i) insert(i);
    for (int i = 1; i <= tree().count(); ++i) {
      if (tree().node(i).expanded) {
        send(TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(itemOf(i)));
      }
    }
    if (tree().selected() != 0) {
      send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(itemOf(tree().selected())));
    }
    mirroring_ = false;
  }

  LRESULT notified(NMHDR& header) override {
    const bool known = header.code == TVN_SELCHANGEDW || header.code == TVN_ITEMEXPANDEDW;
    if (!known || mirroring_ || stale_) return 0;
    const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
    const auto index = static_cast<int>(change.itemNew.lParam);
    if (header.code == TVN_SELCHANGEDW) {
      tree().quietly([&] { tree().select(index); });
    } else {
      const bool expanded = (change.itemNew.state & TVIS_EXPANDED) != 0;
      tree().quietly([&] {
        if (expanded) {
          tree().expand(index);
        } else {
          tree().node(index).expanded = false;
        }
      });
      showImage(index);
    }
    return 0;
  }

 private:
  [[nodiscard]] TreeView& tree() const { return static_cast<TreeView&>(*part().control); }
  [[nodiscard]] HTREEITEM itemOf(int index) const {
    return items_[static_cast<std::size_t>(index)];
  }
  [[nodiscard]] int imageOf(int index) const { return tree().node(index).shownImage() - 1; }

  void insert(int index) {
    const TreeView::Node& node = tree().node(index);
    std::wstring text = wide(node.text);
    TVINSERTSTRUCTW item{};
    item.hParent = itemOf(node.parent);
    item.hInsertAfter = TVI_LAST;
    item.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_PARAM;
    item.item.pszText = text.data();
    item.item.iImage = imageOf(index);
    item.item.iSelectedImage = item.item.iImage;
    item.item.lParam = index;
    items_[static_cast<std::size_t>(index)] =
        reinterpret_cast<HTREEITEM>(send(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
  }
  void showImage(int index) const {
    TVITEMW item{};
    item.mask = TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    item.hItem = itemOf(index);
    item.iImage = imageOf(index);
    item.iSelectedImage = item.iImage;
    send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }

  std::vector<HTREEITEM> items_;  // by the nodes' indexes
  HIMAGELIST images_ = nullptr;
  bool stale_ = false;
};

}  // namespace

std::unique_ptr<Widget> makeListWidget(const WidgetPlace& place) {
  return std::make_unique<ListWidget>(place);
}

std::unique_ptr<Widget> makeTreeWidget(const WidgetPlace& place) {
  return std::make_unique<TreeWidget>(place);
}

}  // namespace vlout::ui::win32
