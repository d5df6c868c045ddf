list(APPEND TALMO_CLI_LIBS talmo_marking)
# The conversion needs no C++ library beyond the standard one.
set(TALMO_CLI_OWN_RUNTIME ON)
