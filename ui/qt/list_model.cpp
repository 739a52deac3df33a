#include "ui/qt/list_model.h"

#include "ui/qt/qt_text.h"

namespace vlout::ui::qt {

ListModel::ListModel(ListView& list, QObject* parent)
    : QAbstractTableModel(parent), list_(list), shown_(static_cast<int>(list.rows().size())) {
  constexpr int kDelay = 50;  // milliseconds
  follower_.setSingleShot(true);
  follower_.setInterval(kDelay);
  connect(&follower_, &QTimer::timeout, this, [this] { showNewRows(); });
  const auto soon = [this] {
    if (!follower_.isActive()) follower_.start();
  };
  list_.events = {.rowAdded = [soon](std::size_t) { soon(); },
                  .cellSet =
                      [this](std::size_t row, std::size_t column) {
                        if (static_cast<int>(row) >= shown_) return;
                        const QModelIndex cell =
                            index(static_cast<int>(row), static_cast<int>(column));
                        dataChanged(cell, cell);
                      },
                  .rowSelected = [soon](std::size_t) { soon(); },
                  .cleared = [this] { clear(); }};
}

ListModel::~ListModel() {
  list_.events = {};
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : shown_;
}

int ListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(list_.columns().size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
  // The tool tip shows a text that its column cuts off.
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  return textOf(
      list_.cell(static_cast<std::size_t>(index.row()), static_cast<std::size_t>(index.column())));
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
  return textOf(list_.columns().at(static_cast<std::size_t>(section)).title);
}

void ListModel::showNewRows() {
  const auto rows = static_cast<int>(list_.rows().size());
  if (rows > shown_) {
    beginInsertRows({}, shown_, rows - 1);
    shown_ = rows;
    endInsertRows();
  }
  if (newRowsShown) newRowsShown();
}

void ListModel::clear() {
  beginResetModel();
  shown_ = 0;
  endResetModel();
}

}  // namespace vlout::ui::qt
