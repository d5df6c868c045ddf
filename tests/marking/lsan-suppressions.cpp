// fontconfig's configuration and pango/GLib's type registries live as long as the process by design.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n"
           "leak:libpango-1.0.so\n"
           "leak:libpangoft2-1.0.so\n"
           "leak:libpangocairo-1.0.so\n"
           "leak:libgobject-2.0.so\n"
           "leak:libglib-2.0.so\n";
}
