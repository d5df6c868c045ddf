list(APPEND TALMO_CLI_LIBS talmo_paperlib)
