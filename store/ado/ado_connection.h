// The database port on a Jet file through ADO: one ADO connection with the component's own
// settings, client-side recordsets for reads, the connection's execute for writes, all of it
// through late-bound calls. Errors carry ADO's own text.
#pragma once

#include "store/connection.h"
#include "windows/dispatch.h"

namespace vlout::store::ado {

class AdoConnection : public Connection {
 public:
  void open(const ConnectionSettings& settings) override;
  [[nodiscard]] bool isOpen() const override;
  std::int64_t execute(std::string_view sql) override;
  void requireShortEnough(std::string_view sql) const override;
  std::unique_ptr<Recordset> query(std::string_view sql) override;

 private:
  class Rows;

  void requireOpen() const;
  std::int64_t run(std::string_view sql);
  // Makes calls; throws DatabaseError with what the connection says about the one that failed.
  template <typename Call>
  auto guarded(std::string_view what, Call call);
  [[noreturn]] void fail(std::string_view what, std::string text);
  struct LastErrors;
  [[nodiscard]] LastErrors lastErrors();

  struct {
    windows::MemberIds connection, recordset, fields, field, errors, error;
  } classes_;
  windows::Dispatch connection_;
  std::string closedBecause_ = "데이터베이스가 열려 있지 않습니다.";
};

}  // namespace vlout::store::ado
