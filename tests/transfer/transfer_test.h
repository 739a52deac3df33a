// A component whose transfers are pressed as its user does, for the tests of each of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/component_fixture.h"

namespace vlout::transfer {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using ui::frmOutlookSync;

class TransferTest : public tests::ComponentFixture {
 protected:
  std::vector<std::string> exportAll() { return run(frmOutlookSync::kExport); }
  std::vector<std::string> importAll() { return run(frmOutlookSync::kImport); }
  std::vector<std::string> sync() { return run(frmOutlookSync::kSync); }
  std::size_t rows() { return database.query("SELECT i_idx FROM tbl_namecard")->rowCount(); }
};

}  // namespace vlout::transfer
