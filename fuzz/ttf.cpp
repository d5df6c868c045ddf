// TrueType bytes into the Type 42 writer: any input must end in a clean stop or a program.
// (Run with -close_fd_mask=2 to hide the two DEBUG messages.)
#include "marking/marking.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string out;
    (void)talmo::convertTTFtoPS42({data, size}, "Fuzz", out);
    return 0;
}
