// fontconfig keeps its configuration and pango/GLib their type registries for the life of the
// process by design; the leak checker would report them at exit. Our own allocations stay
// checked.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n"
           "leak:libpango-1.0.so\n"
           "leak:libpangoft2-1.0.so\n"
           "leak:libpangocairo-1.0.so\n"
           "leak:libgobject-2.0.so\n"
           "leak:libglib-2.0.so\n";
}
