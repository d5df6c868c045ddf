add_test(NAME cli_pages COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/pages-test.sh $<TARGET_FILE:talmo>)
