#include "desktop/guest/XwdPicture.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace tolvane::desktoptest {

namespace {

// The header is 25 big-endian 32-bit fields; the window name and the colour map follow it.
enum Field {
    headerSize = 0,
    pixmapWidth = 4,
    pixmapHeight = 5,
    byteOrder = 7,
    bitsPerPixel = 11,
    lineBytes = 12,
    visualClass = 13,
    redMaskField = 14,
    greenMaskField = 15,
    blueMaskField = 16,
    colourCount = 19,
    fieldCount = 25,
};
constexpr int trueColor = 4;
constexpr std::size_t colourEntryBytes = 12;

std::uint32_t field(const std::vector<unsigned char>& file, int index) {
    const std::size_t at = std::size_t(index) * 4;
    return std::uint32_t(file[at]) << 24 | std::uint32_t(file[at + 1]) << 16 |
           std::uint32_t(file[at + 2]) << 8 | std::uint32_t(file[at + 3]);
}

// The mask's bits moved down and scaled to 0..255.
int channel(std::uint32_t value, std::uint32_t mask) {
    if (mask == 0) {
        return 0;
    }
    const std::uint32_t bits = (value & mask) >> std::countr_zero(mask);
    const std::uint32_t top = mask >> std::countr_zero(mask);
    return int(bits * 255 / top);
}

} // namespace

std::optional<XwdPicture> XwdPicture::read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<unsigned char> file((std::istreambuf_iterator<char>(in)),
                                    std::istreambuf_iterator<char>());
    if (file.size() < fieldCount * 4) {
        return std::nullopt;
    }
    XwdPicture picture;
    picture.w = int(field(file, pixmapWidth));
    picture.h = int(field(file, pixmapHeight));
    picture.bytesPerLine = int(field(file, lineBytes));
    picture.bytesPerPixel = int(field(file, bitsPerPixel)) / 8;
    picture.littleEndian = field(file, byteOrder) == 0;
    picture.redMask = field(file, redMaskField);
    picture.greenMask = field(file, greenMaskField);
    picture.blueMask = field(file, blueMaskField);
    const std::size_t start = field(file, headerSize) + field(file, colourCount) * colourEntryBytes;
    const std::size_t size = std::size_t(picture.bytesPerLine) * std::size_t(picture.h);
    if (field(file, visualClass) != trueColor ||
        (picture.bytesPerPixel != 3 && picture.bytesPerPixel != 4) ||
        picture.bytesPerLine < picture.w * picture.bytesPerPixel || file.size() < start + size) {
        return std::nullopt;
    }
    picture.pixels.assign(file.begin() + std::ptrdiff_t(start),
                          file.begin() + std::ptrdiff_t(start + size));
    return picture;
}

std::uint32_t XwdPicture::pixel(int x, int y) const {
    const unsigned char* p = pixels.data() + std::size_t(y) * std::size_t(bytesPerLine) +
                             std::size_t(x) * std::size_t(bytesPerPixel);
    std::uint32_t value = 0;
    for (int i = 0; i < bytesPerPixel; ++i) {
        const int shift = littleEndian ? 8 * i : 8 * (bytesPerPixel - 1 - i);
        value |= std::uint32_t(p[i]) << shift;
    }
    return std::uint32_t(channel(value, redMask)) << 16 |
           std::uint32_t(channel(value, greenMask)) << 8 | std::uint32_t(channel(value, blueMask));
}

std::optional<ColourPatch> XwdPicture::find(std::uint32_t rgb, int tolerance, int x, int y,
                                            int width, int height) const {
    const auto near = [tolerance](std::uint32_t a, std::uint32_t b, int shift) {
        return std::abs(int((a >> shift) & 0xff) - int((b >> shift) & 0xff)) <= tolerance;
    };
    std::optional<ColourPatch> patch;
    for (int row = std::max(y, 0); row < std::min(y + height, h); ++row) {
        for (int column = std::max(x, 0); column < std::min(x + width, w); ++column) {
            const std::uint32_t p = pixel(column, row);
            if (!near(p, rgb, 16) || !near(p, rgb, 8) || !near(p, rgb, 0)) {
                continue;
            }
            if (!patch) {
                patch = ColourPatch{0, column, row, column, row};
            }
            ++patch->count;
            patch->left = std::min(patch->left, column);
            patch->right = std::max(patch->right, column);
            patch->top = std::min(patch->top, row);
            patch->bottom = std::max(patch->bottom, row);
        }
    }
    return patch;
}

} // namespace tolvane::desktoptest
