# In process, and whole processes of `talmo type42` beside `ttftotype42` (lcdf-typetools).
add_executable(bench_type42 ${CMAKE_CURRENT_SOURCE_DIR}/type42.cpp)
target_compile_definitions(bench_type42 PRIVATE TALMO_CLI="$<TARGET_FILE:talmo>")
target_link_libraries(bench_type42 PRIVATE talmo_marking benchmark::benchmark_main)
add_dependencies(bench_type42 talmo)
