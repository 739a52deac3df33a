// Fills the work list from the database for a mode and range. The run button calls one loader and
// checks the outcome text that it returns.
#pragma once

#include <string_view>
#include <vector>

#include "store/connection.h"
#include "transfer/run_window.h"
#include "transfer/work_list.h"

namespace vlout::transfer {

inline constexpr std::string_view kOutcomeLoaded = "TRUE";
inline constexpr std::string_view kOutcomeNoData = "NODATA";
inline constexpr std::string_view kOutcomeFailed = "FALSE";
inline constexpr std::string_view kOutcomeNoGroup = "NOGROUP";

// The folder that was open in the host, as its export list names it.
struct OpenFolder {
  std::string_view id;
  std::string_view name;
};

class WorkListLoader {
 public:
  WorkListLoader(store::Connection& connection, WorkList& list, RunWindow& window)
      : connection_(connection), list_(list), window_(window) {}

  // Each throws DatabaseError when a query fails; the run ends with it.
  std::string_view loadAll();
  std::string_view loadGroup(const OpenFolder& folder);
  std::string_view loadGroupWithSubgroups(const OpenFolder& folder);

  // `cardIds` in ascending order. Throws DatabaseError for an id that no card has.
  std::string_view loadSelected(const std::vector<std::string>& cardIds);

 private:
  std::string_view load(std::string_view sql);
  void addRow(const store::Recordset& row);

  store::Connection& connection_;
  WorkList& list_;
  RunWindow& window_;
};

}  // namespace vlout::transfer
