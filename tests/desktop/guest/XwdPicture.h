#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::desktoptest {

// Where pixels of one colour lie inside a rectangle, or nothing when none do.
struct ColourPatch {
    int count = 0;
    int left = 0;
    int top = 0;
    int right = 0; // inclusive
    int bottom = 0;
};

// A 24- or 32-bit TrueColor picture in the X window dump format, as Xvfb keeps its screen
// with -fbdir, read once into memory.
class XwdPicture {
public:
    static std::optional<XwdPicture> read(const std::string& path);

    int width() const { return w; }
    int height() const { return h; }
    // 0xRRGGBB of a pixel inside the picture.
    std::uint32_t pixel(int x, int y) const;

    // Pixels whose every channel is within `tolerance` of `rgb`, inside the rectangle, which
    // is clipped to the picture.
    std::optional<ColourPatch> find(std::uint32_t rgb, int tolerance, int x, int y, int width,
                                    int height) const;

private:
    int w = 0;
    int h = 0;
    int bytesPerLine = 0;
    int bytesPerPixel = 0;
    bool littleEndian = true;
    std::uint32_t redMask = 0;
    std::uint32_t greenMask = 0;
    std::uint32_t blueMask = 0;
    std::vector<unsigned char> pixels;
};

} // namespace tolvane::desktoptest
