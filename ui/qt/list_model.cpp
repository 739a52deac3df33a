#include "ui/qt/list_model.h"

#include "ui/qt/qt_text.h"

namespace vlout::ui::qt {

ListModel::ListModel(ListView& list, QObject* parent)
    : QAbstractTableModel(parent), list_(list), shown_(static_cast<int>(list.rows().size())) {
  list_.events = {.rowAdded = [this](std::size_t) { add(); },
                  .cellSet =
                      [this](std::size_t row, std::size_t column) {
                        const QModelIndex cell =
                            index(static_cast<int>(row), static_cast<int>(column));
                        dataChanged(cell, cell);
                      },
                  .rowSelected =
                      [this](std::size_t row) {
                        if (rowSelected) rowSelected(static_cast<int>(row));
                      },
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
  // The tip shows a line that its column cuts off.
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  return textOf(
      list_.cell(static_cast<std::size_t>(index.row()), static_cast<std::size_t>(index.column())));
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
  return textOf(list_.columns().at(static_cast<std::size_t>(section)).title);
}

void ListModel::add() {
  beginInsertRows({}, shown_, shown_);
  ++shown_;
  endInsertRows();
}

void ListModel::clear() {
  beginResetModel();
  shown_ = 0;
  endResetModel();
}

}  // namespace vlout::ui::qt
