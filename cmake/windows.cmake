# The Windows adapters and the COM component.
add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
target_sources(vlout_core PRIVATE entry/com/ini_file.cpp windows/text.cpp)

add_library(vlout_windows STATIC
  windows/com.cpp
  windows/dispatch.cpp
  store/ado/ado_connection.cpp
  outlook/automation/outlook_contact.cpp
  outlook/automation/outlook_store.cpp
  ui/win32/form_window.cpp
  ui/win32/list_widgets.cpp
  ui/win32/look.cpp
  ui/win32/picture_bitmap.cpp
  ui/win32/skin_framework.cpp
  ui/win32/widget.cpp
  ui/win32/win32_toolkit.cpp
  ui/win32/window_context.cpp)
target_link_libraries(vlout_windows PUBLIC vlout_core ole32 oleaut32 uuid comctl32 msimg32)

# The interface: a header and a type library out of the IDL.
set(VLOUT_IDL_HEADER "${PROJECT_BINARY_DIR}/idl/vloutsync_h.h")
set(VLOUT_IDL_IDS "${PROJECT_BINARY_DIR}/idl/vloutsync_i.c")
set(VLOUT_TYPELIB "${PROJECT_BINARY_DIR}/idl/vloutsync.tlb")
find_program(VLOUT_WIDL ${VLOUT_TRIPLET}-widl REQUIRED)
# The system's own IDL and type library, which Wine's development files bring.
find_path(VLOUT_SYSTEM_IDL oaidl.idl PATHS /usr/include/wine/wine/windows /usr/include/wine/windows
  REQUIRED NO_CMAKE_FIND_ROOT_PATH)
file(GLOB VLOUT_STDOLE /usr/lib/*/wine/*-windows/stdole2.tlb)
list(GET VLOUT_STDOLE 0 VLOUT_STDOLE)
cmake_path(GET VLOUT_STDOLE PARENT_PATH VLOUT_STDOLE_FOLDER)
set(VLOUT_WIDL_PATHS -I "${VLOUT_SYSTEM_IDL}" -L "${VLOUT_STDOLE_FOLDER}")
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/idl")
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(VLOUT_WIDL_BITS --win64)
else()
  set(VLOUT_WIDL_BITS --win32)
endif()
add_custom_command(
  OUTPUT "${VLOUT_IDL_HEADER}" "${VLOUT_IDL_IDS}" "${VLOUT_TYPELIB}"
  COMMAND "${VLOUT_WIDL}" ${VLOUT_WIDL_BITS} ${VLOUT_WIDL_PATHS} -h -H "${VLOUT_IDL_HEADER}" -u -U "${VLOUT_IDL_IDS}"
    "${PROJECT_SOURCE_DIR}/entry/com/vloutsync.idl"
  COMMAND "${VLOUT_WIDL}" ${VLOUT_WIDL_BITS} ${VLOUT_WIDL_PATHS} -t -T "${VLOUT_TYPELIB}"
    "${PROJECT_SOURCE_DIR}/entry/com/vloutsync.idl"
  DEPENDS entry/com/vloutsync.idl
  VERBATIM)

enable_language(C RC)
string(REPLACE "." "," VLOUT_VERSION_NUMBERS "${PROJECT_VERSION}.0")
configure_file(entry/com/vloutsync.rc.in "${PROJECT_BINARY_DIR}/vloutsync.rc" @ONLY)
set_source_files_properties("${PROJECT_BINARY_DIR}/vloutsync.rc" PROPERTIES
  OBJECT_DEPENDS "${VLOUT_TYPELIB};${PROJECT_SOURCE_DIR}/entry/com/vloutsync.manifest")

add_library(VLOUTSync SHARED
  "${VLOUT_IDL_HEADER}"
  "${VLOUT_IDL_IDS}"
  entry/com/dll.cpp
  entry/com/message_filter.cpp
  entry/com/module.cpp
  entry/com/orun_object.cpp
  entry/com/registration.cpp
  entry/com/vloutsync.def
  "${PROJECT_BINARY_DIR}/vloutsync.rc")
set_target_properties(VLOUTSync PROPERTIES PREFIX "")
target_include_directories(VLOUTSync PRIVATE "${PROJECT_BINARY_DIR}/idl")
target_link_libraries(VLOUTSync PRIVATE vlout_windows)
target_link_options(VLOUTSync PRIVATE LINKER:--enable-stdcall-fixup -s)

if(VLOUT_SQLITE)
  add_subdirectory(tests/windows)
endif()
