# Whole-process paper list fetches from a loopback ippeveprinter: `talmo papers fetch` beside
# `ipptool` asking the same question. Uses the shared loopback printer.
add_executable(bench_papers_fetch ${CMAKE_CURRENT_SOURCE_DIR}/papers-fetch.cpp)
target_compile_definitions(bench_papers_fetch PRIVATE TALMO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
                           TALMO_CLI="$<TARGET_FILE:talmo>")
target_link_libraries(bench_papers_fetch PRIVATE talmo_paperlib talmo_loopback_servers benchmark::benchmark_main)
add_dependencies(bench_papers_fetch talmo)
