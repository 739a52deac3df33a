# The Windows adapters and the COM component.
add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
target_sources(vlout_core PRIVATE entry/com/ini_file.cpp windows/text.cpp)

add_library(vlout_windows STATIC
  windows/com.cpp
  windows/dispatch.cpp
  store/ado/ado_connection.cpp
  outlook/automation/outlook_contact.cpp
  outlook/automation/outlook_store.cpp)
target_link_libraries(vlout_windows PUBLIC vlout_core ole32 oleaut32 uuid)
# The system's ADO header has declarations that declare nothing; the compiler lets them pass in a
# system header only with this, and -Werror keeps our own code as strict as before.
set_source_files_properties(store/ado/ado_connection.cpp PROPERTIES COMPILE_OPTIONS -fpermissive)
