#include "transfer/work_list_loader.h"

#include <algorithm>
#include <string>

#include "store/folders.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/language.h"
#include "text/trim.h"

namespace vlout::transfer {
namespace {

constexpr std::string_view kSelect =
    "SELECT i_idx,FullName,cellphone,email,Outlook_modate,Last_moddate,VLLastsync_date,folder_name "
    "from [tbl_namecard]";
constexpr std::string_view kOrder = " order by [FullName] ASC";
constexpr std::string_view kRootName = "전체";
constexpr std::string_view kHeading = "데이터 구성";

std::string select(std::string_view filter, std::string_view order) {
  return std::string(kSelect).append(filter).append(order);
}

// Shows the progress bar while a loader works, whatever ends it.
class ProgressShown {
 public:
  explicit ProgressShown(RunWindow& window) : window_(window) {
    window_.showProgress(true);
    window_.setProgress(0);
  }
  ~ProgressShown() { window_.showProgress(false); }
  ProgressShown(const ProgressShown&) = delete;
  ProgressShown& operator=(const ProgressShown&) = delete;

 private:
  RunWindow& window_;
};

}  // namespace

std::string_view WorkListLoader::loadAll() {
  return load(select(" Where [P_IDX]=0", kOrder));
}

std::string_view WorkListLoader::loadGroup(const OpenFolder& folder) {
  if (folder.name == kRootName) return load(select(" Where p_idx=0", kOrder));
  store::requireNumber(folder.id, {"그룹 번호", "group number"});
  return load(select(" Where [f_idx]=" + std::string(folder.id) + " AND p_idx=0", kOrder));
}

std::string_view WorkListLoader::loadGroupWithSubgroups(const OpenFolder& folder) {
  if (folder.name == kRootName) return load(select(" Where p_idx=0", kOrder));
  const std::string ids = store::folderWithSubfolders(connection_, folder.id);
  return load(select(" Where f_idx in (" + ids + ") and (p_idx=0)", kOrder));
}

std::string_view WorkListLoader::load(std::string_view sql) {
  const ProgressShown progress(window_);
  list_.clear();
  const auto rows = connection_.query(sql);
  if (rows->rowCount() == 0) return kOutcomeNoData;
  list_.expect(rows->rowCount());
  PhaseLine heading(window_, kHeading, rows->rowCount());
  for (std::size_t n = 1; !rows->atEnd(); rows->moveNext(), ++n) {
    heading.advance(n);
    addRow(*rows);
  }
  heading.finish();
  return kOutcomeLoaded;
}

std::string_view WorkListLoader::loadSelected(const std::vector<std::string>& cardIds) {
  const ProgressShown progress(window_);
  list_.clear();
  if (cardIds.empty()) {
    // The run button shows the same message again for this outcome; both are meant to appear.
    window_.message(MessageIcon::Critical, "데이터 연결이 실패되었습니다!");
    return kOutcomeFailed;
  }
  const auto rows = connection_.query(select("", " order by [i_idx] ASC"));
  if (rows->rowCount() == 0) return kOutcomeNoData;
  PhaseLine heading(window_, kHeading, cardIds.size());
  for (std::size_t n = 1; n <= cardIds.size(); ++n) {
    heading.advance(n);
    const auto wanted = text::parseInteger(cardIds[n - 1]);
    while (!rows->atEnd() && text::parseInteger(store::nullSafe(rows->field("i_idx"))) != wanted) {
      rows->moveNext();
    }
    if (rows->atEnd()) {
      throw store::DatabaseError(text::say("선택한 명함이 데이터베이스에 없습니다: %1",
                                           "the database has no such card: %1", {cardIds[n - 1]}));
    }
    addRow(*rows);
  }
  heading.finish();
  return kOutcomeLoaded;
}

void WorkListLoader::addRow(const store::Recordset& row) {
  const auto field = [&](std::string_view column) { return store::nullSafe(row.field(column)); };
  const auto trimmed = [&](std::string_view column) {
    return std::string(text::trim(field(column)));
  };
  list_.add({.name = trimmed("FullName"),
             .mobile = text::digitsOnly(field("cellphone")),
             .email = trimmed("email"),
             .id = text::replaceAll(field("i_idx"), " ", ""),
             .lastModified = std::string(field("Last_moddate")),
             .outlookModified = std::string(field("Outlook_modate")),
             .lastSync = std::string(field("VLLastsync_date")),
             .folderName = std::string(field("folder_name"))});
}

}  // namespace vlout::transfer
