add_test(NAME cli_dispatch COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/dispatch-test.sh $<TARGET_FILE:talmo>)
