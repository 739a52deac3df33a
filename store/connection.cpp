#include "store/connection.h"

#include "text/file_path.h"

namespace vlout::store {

std::string ConnectionSettings::connectionString() const {
  std::string text = "provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
  text += text::pathText(componentFolder);
  text += '\\';
  text += kFileName;
  text += ";Jet OLEDB:Database Password=pinewood930417;Persist Security Info=True;User ID=admin";
  return text;
}

std::filesystem::path ConnectionSettings::databaseFile() const {
  return componentFolder / kFileName;
}

}  // namespace vlout::store
