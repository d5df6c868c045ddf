// Qt's font database keeps fontconfig's configuration for the life of the process by design;
// the leak checker would report it at exit. Our own allocations stay checked.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
