// The database port on a Jet file through ADO: one ADO connection with the component's own
// settings, client-side recordsets for reads, the connection's execute for writes. Errors carry
// ADO's own text.
#pragma once

#include "store/connection.h"
#include "windows/com.h"

struct Connection15;

namespace vlout::store {

class AdoConnection : public Connection {
 public:
  AdoConnection();
  ~AdoConnection() override;

  void open(const ConnectionSettings& settings) override;
  [[nodiscard]] bool isOpen() const override;
  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<Recordset> query(std::string_view sql) override;

 private:
  class Rows;

  void requireOpen() const;
  // Throws DatabaseError with what the connection says about its last failure.
  void check(HRESULT result, std::string_view what) const;
  [[nodiscard]] std::string lastErrors() const;

  windows::ComPtr<Connection15> connection_;
  std::string closedBecause_ = "데이터베이스가 열려 있지 않습니다.";
};

}  // namespace vlout::store
