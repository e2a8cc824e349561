# orv_sqlite: the database engine, as installed for the target, else from its source in one file, which
# scripts/setup.sh makes. A connection is used by one thread at a time.
find_package(SQLite3 QUIET)
if(SQLite3_FOUND)
  add_library(orv_sqlite INTERFACE)
  target_link_libraries(orv_sqlite INTERFACE SQLite::SQLite3)
  return()
endif()

set(sqlite_folder "${CMAKE_SOURCE_DIR}/build/deps/sqlite")
if(NOT EXISTS "${sqlite_folder}/sqlite3.c")
  message(FATAL_ERROR "SQLite is missing: run scripts/setup.sh")
endif()
add_library(orv_sqlite STATIC "${sqlite_folder}/sqlite3.c")
# Not our code: without our warnings, and without what only finds faults of ours.
target_compile_options(orv_sqlite PRIVATE -w $<$<NOT:$<BOOL:${ORV_COVERAGE}>>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>)
target_compile_definitions(orv_sqlite PRIVATE
  SQLITE_THREADSAFE=2 SQLITE_DQS=0 SQLITE_DEFAULT_MEMSTATUS=0 SQLITE_LIKE_DOESNT_MATCH_BLOBS SQLITE_USE_ALLOCA
  SQLITE_OMIT_DEPRECATED SQLITE_OMIT_SHARED_CACHE SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_PROGRESS_CALLBACK
  SQLITE_OMIT_DECLTYPE SQLITE_ENABLE_FTS5 SQLITE_MAX_EXPR_DEPTH=0 SQLITE_TEMP_STORE=2
  # Under Wine every overlapped read and write is a round trip to its server.
  SQLITE_WIN32_NO_OVERLAPPED)
target_include_directories(orv_sqlite SYSTEM PUBLIC "${sqlite_folder}")
