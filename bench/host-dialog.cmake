# Whole-process time of `talmo-print --save-ticket` beside a bare Qt print dialog.
find_package(Qt6 COMPONENTS Widgets PrintSupport)
if(TARGET talmo-print AND Qt6_FOUND)
  add_executable(bench_bare_print_dialog ${CMAKE_CURRENT_SOURCE_DIR}/bare-print-dialog.cpp)
  target_link_libraries(bench_bare_print_dialog PRIVATE Qt6::Widgets Qt6::PrintSupport)
  add_executable(bench_host_dialog ${CMAKE_CURRENT_SOURCE_DIR}/host-dialog.cpp)
  target_compile_definitions(bench_host_dialog PRIVATE TALMO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    TALMO_PRINT="$<TARGET_FILE:talmo-print>" BARE_DIALOG="$<TARGET_FILE:bench_bare_print_dialog>")
  target_link_libraries(bench_host_dialog PRIVATE benchmark::benchmark_main)
  add_dependencies(bench_host_dialog talmo-print bench_bare_print_dialog)
endif()
