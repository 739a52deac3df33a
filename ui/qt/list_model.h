// A report list as a model for Qt's views: reads the list's own rows and tells the view what
// changes. A run adds lines faster than anyone can read, so the view hears of new ones only a few
// times a second.
#pragma once

#include <QAbstractTableModel>
#include <QTimer>

#include <functional>

#include "ui/controls.h"

namespace vlout::ui::qt {

class ListModel : public QAbstractTableModel {
 public:
  // Takes the list's events for its own lifetime.
  ListModel(ListView& list, QObject* parent);
  ~ListModel() override;
  ListModel(const ListModel&) = delete;
  ListModel& operator=(const ListModel&) = delete;

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role) const override;

  // Called after the view has been told of new rows.
  std::function<void()> newRowsShown;

 private:
  void showNewRows();
  void clear();

  ListView& list_;
  int shown_ = 0;  // rows that the view knows about
  QTimer follower_;
};

}  // namespace vlout::ui::qt
