# The Linux adapters and the program that hosts the component.
find_package(PkgConfig REQUIRED)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3>=3.40)
pkg_check_modules(EBOOK REQUIRED IMPORTED_TARGET libebook-1.2>=3.46)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(MDB REQUIRED IMPORTED_TARGET libmdb>=1.0)
find_package(JPEG REQUIRED)
find_package(CLI11 REQUIRED)

file(READ store/schema.sql VLOUT_SCHEMA_SQL)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS store/schema.sql)
configure_file(store/sqlite/schema_sql.cpp.in "${PROJECT_BINARY_DIR}/schema_sql.cpp" @ONLY)

target_sources(vlout_core PRIVATE entry/cli/ini_file.cpp)
target_link_libraries(vlout_core PRIVATE PkgConfig::GLIB)

add_library(vlout_linux STATIC
  "${PROJECT_BINARY_DIR}/schema_sql.cpp"
  store/sqlite/backup.cpp
  store/sqlite/database_files.cpp
  store/sqlite/hooks.cpp
  store/sqlite/preview_connection.cpp
  store/sqlite/sqlite_connection.cpp
  store/sqlite/statement.cpp
  store/jet/jet_file.cpp
  store/jet/jet_reader.cpp
  store/jet/jet_value.cpp
  outlook/vcard/card_file.cpp
  outlook/vcard/card_journal.cpp
  outlook/vcard/card_merge.cpp
  outlook/vcard/card_text.cpp
  outlook/vcard/charset.cpp
  outlook/vcard/contact_changes.cpp
  outlook/vcard/content_line.cpp
  outlook/vcard/draft.cpp
  outlook/vcard/folder.cpp
  outlook/vcard/folder_index.cpp
  outlook/vcard/preview_contact.cpp
  outlook/vcard/preview_store.cpp
  outlook/vcard/vcard_contact.cpp
  outlook/vcard/vcard_store.cpp
  outlook/vcard/vcard_syntax.cpp
  posix/private_folder.cpp
  history/card_files.cpp
  outlook/evolution/calls.cpp
  outlook/evolution/change_times.cpp
  outlook/evolution/desktop.cpp
  outlook/evolution/evolution_store.cpp
  outlook/evolution/fingerprint.cpp
  outlook/evolution/mirror.cpp
  outlook/evolution/open_book.cpp
  outlook/evolution/uid_word.cpp
  history/completion.cpp
  history/restore_point.cpp
  history/rows.cpp
  history/run_recorder.cpp
  history/run_report.cpp
  history/runs.cpp
  history/trail.cpp
  history/undo.cpp
  history/written_log.cpp
  sample/cards.cpp
  sample/picture.cpp
  ui/terminal/terminal_toolkit.cpp
  entry/cli/command.cpp
  entry/cli/book_side.cpp
  entry/cli/books_command.cpp
  entry/cli/cards_command.cpp
  entry/cli/columns.cpp
  entry/cli/component_folder.cpp
  entry/cli/contacts_place.cpp
  entry/cli/convert_command.cpp
  entry/cli/convert_jet.cpp
  entry/cli/desk.cpp
  entry/cli/group_tree.cpp
  entry/cli/history_command.cpp
  entry/cli/init_command.cpp
  entry/cli/notification.cpp
  entry/cli/parser_words.cpp
  entry/cli/platform.cpp
  entry/cli/preview.cpp
  entry/cli/read_only.cpp
  entry/cli/run_command.cpp
  entry/cli/run_lines.cpp
  entry/cli/sample_command.cpp
  entry/cli/status_command.cpp
  entry/cli/terminal.cpp
  entry/cli/undo_command.cpp
  entry/cli/users_language.cpp
  entry/cli/window_command.cpp)
target_link_libraries(vlout_linux PUBLIC vlout_core PkgConfig::SQLITE PRIVATE PkgConfig::EBOOK PkgConfig::MDB JPEG::JPEG CLI11::CLI11)

add_executable(vloutsync entry/cli/main.cpp)
target_link_libraries(vloutsync PRIVATE vlout_linux CLI11::CLI11)
target_compile_definitions(vloutsync PRIVATE VLOUT_VERSION="${PROJECT_VERSION}")


# The windows: a program of its own, so that runs in the terminal need not load Qt.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
add_library(vlout_qt STATIC
  ui/qt/form_window.cpp
  ui/qt/list_model.cpp
  ui/qt/picture_pixmap.cpp
  ui/qt/qt_toolkit.cpp
  ui/qt/skins.cpp
  ui/qt/widgets.cpp)
target_compile_definitions(vlout_qt PUBLIC QT_NO_KEYWORDS)
target_link_libraries(vlout_qt PUBLIC vlout_core Qt6::Widgets)

add_executable(vloutsync-window entry/qt/main.cpp)
target_link_libraries(vloutsync-window PRIVATE vlout_qt vlout_linux)

# The package.
include(GNUInstallDirs)
install(TARGETS vloutsync RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS vloutsync-window RUNTIME DESTINATION lib/vloutsync)
install(FILES packaging/linux/vloutsync.desktop DESTINATION share/applications)
install(FILES packaging/linux/vloutsync.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES packaging/linux/vloutsync.service packaging/linux/vloutsync.timer
        DESTINATION lib/systemd/user)
install(FILES packaging/linux/vloutsync.1 DESTINATION share/man/man1)
install(FILES packaging/linux/vloutsync.bash
  DESTINATION share/bash-completion/completions RENAME vloutsync)
install(FILES docs/guide.ko.md docs/guide.en.md DESTINATION share/doc/vloutsync)
install(DIRECTORY docs/pictures DESTINATION share/doc/vloutsync)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vloutsync)
set(CPACK_PACKAGE_CONTACT "VLOUTSync")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Exchanges contacts between a business-card database and a folder of vCards")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk | fonts-nanum")
include(CPack)
