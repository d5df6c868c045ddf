# The named paper table filled and painted with 2,000 papers, beside building the entries alone.
if(TARGET talmo_panels)
  add_executable(bench_named_paper_dialog ${CMAKE_CURRENT_SOURCE_DIR}/named-paper-dialog.cpp)
  target_link_libraries(bench_named_paper_dialog PRIVATE talmo_panels talmo_toolkit benchmark::benchmark)
  target_compile_definitions(bench_named_paper_dialog PRIVATE TALMO_BUNDLE_PATH="$<TARGET_FILE_DIR:TalmoFeatures>")
  add_dependencies(bench_named_paper_dialog TalmoFeaturesBundle)
endif()
