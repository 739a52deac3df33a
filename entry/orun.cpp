#include "entry/orun.h"

namespace vlout::entry {

void ORUN::OUTSYNCRUN() {
  runtime_.loadOptions();
  // The window opens whether or not the database did; its transfers then find no connection.
  runtime_.connectDatabase();
  runtime_.mainWindow().showModal();
  runtime_.releaseMainWindow();
}

}  // namespace vlout::entry
