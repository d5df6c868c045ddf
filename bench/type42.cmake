add_executable(bench_type42 ${CMAKE_CURRENT_SOURCE_DIR}/type42.cpp)
target_link_libraries(bench_type42 PRIVATE talmo_marking benchmark::benchmark_main)
