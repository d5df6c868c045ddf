// Shared helpers of the marking tests: fixture paths, whole-file reads, external programs.
#pragma once

#include <hb.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace talmo::test {

inline std::string dataPath(const std::string& name)
{
    return std::string(TALMO_SOURCE_DIR) + "/tests/marking/data/" + name;
}

inline std::string scratchPath(const std::string& name)
{
    return std::string(TALMO_BINARY_DIR) + "/tests/marking/" + name;
}

inline std::vector<uint8_t> readBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::string readText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeText(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

inline bool haveProgram(const std::string& name)
{
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

inline bool fileExists(const std::string& path) { return std::ifstream(path).good(); }

// Runs a shell command; its exit status.
inline int run(const std::string& command)
{
    int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Glyph ids of the characters of `text` through HarfBuzz's own cmap reading.
inline std::vector<uint16_t> nominalGlyphs(const std::string& fontPath, const std::string& text)
{
    hb_blob_t* blob = hb_blob_create_from_file(fontPath.c_str());
    hb_face_t* face = hb_face_create(blob, 0);
    hb_font_t* font = hb_font_create(face);
    std::vector<uint16_t> ids;
    for (char c : text) {
        hb_codepoint_t g = 0;
        hb_font_get_nominal_glyph(font, hb_codepoint_t(c), &g);
        ids.push_back(uint16_t(g));
    }
    hb_font_destroy(font);
    hb_face_destroy(face);
    hb_blob_destroy(blob);
    return ids;
}

} // namespace talmo::test
