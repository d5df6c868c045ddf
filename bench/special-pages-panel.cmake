# The Special Pages panel's long list: "5-" through the inserts dialog into the ticket beside the
# same list built directly, and showing the 99,995-row list. Reads the built bundle's resources.
if(TARGET TalmoFeatures)
  add_executable(bench_special_pages_panel ${CMAKE_CURRENT_SOURCE_DIR}/special-pages-panel.cpp)
  target_link_libraries(bench_special_pages_panel PRIVATE talmo_panels Qt6::Widgets benchmark::benchmark)
  target_compile_definitions(bench_special_pages_panel PRIVATE
    TALMO_BUNDLE_PATH="$<TARGET_FILE_DIR:TalmoFeatures>")
  add_dependencies(bench_special_pages_panel TalmoFeaturesBundle)
endif()
