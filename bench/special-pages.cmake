add_executable(bench_special-pages ${CMAKE_CURRENT_SOURCE_DIR}/special-pages.cpp)
target_link_libraries(bench_special-pages PRIVATE talmo_ticket benchmark::benchmark_main)
