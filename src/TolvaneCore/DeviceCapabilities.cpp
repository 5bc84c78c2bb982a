#include "TolvaneCore/DeviceCapabilities.h"

#include <charconv>

namespace tolvane {

namespace {

// What is left of `text` after `word`, with `word` set to its first whitespace-separated word.
std::string_view nextWord(std::string_view text, std::string_view& word) {
    const auto isSpace = [](char c) { return c == ' ' || c == '\n' || c == '\t'; };
    std::size_t start = 0;
    while (start < text.size() && isSpace(text[start])) {
        ++start;
    }
    std::size_t end = start;
    while (end < text.size() && !isSpace(text[end])) {
        ++end;
    }
    word = text.substr(start, end - start);
    return text.substr(end);
}

std::uint16_t hexNumber(std::string_view text) {
    std::string_view word;
    nextWord(text, word);
    std::uint16_t value = 0;
    std::from_chars(word.data(), word.data() + word.size(), value, 16);
    return value;
}

} // namespace

std::vector<std::size_t> sysfsBitmapBits(std::string_view text) {
    std::vector<std::uint64_t> words; // most significant first, as printed
    for (std::string_view word; text = nextWord(text, word), !word.empty();) {
        std::uint64_t value = 0;
        const auto [end, error] =
            std::from_chars(word.data(), word.data() + word.size(), value, 16);
        if (error != std::errc() || end != word.data() + word.size()) {
            return {};
        }
        words.push_back(value);
    }
    std::vector<std::size_t> bits;
    for (std::size_t w = 0; w < words.size(); ++w) {
        const std::uint64_t value = words[words.size() - 1 - w];
        for (std::size_t b = 0; b < 64; ++b) {
            if ((value >> b) & 1U) {
                bits.push_back(w * 64 + b);
            }
        }
    }
    return bits;
}

DeviceCapabilities capabilitiesFromSysfs(const std::function<std::string(const char*)>& read) {
    DeviceCapabilities caps;
    const auto line = [&read](const char* file) {
        std::string text = read(file);
        return text.substr(0, text.find('\n'));
    };
    const auto fill = [&read](auto& set, const char* file) {
        for (std::size_t bit : sysfsBitmapBits(read(file))) {
            if (bit < set.size()) {
                set.set(bit);
            }
        }
    };
    caps.name = line("name");
    caps.phys = line("phys");
    caps.busType = hexNumber(read("id/bustype"));
    caps.vendor = hexNumber(read("id/vendor"));
    caps.product = hexNumber(read("id/product"));
    fill(caps.rel, "capabilities/rel");
    fill(caps.abs, "capabilities/abs");
    fill(caps.key, "capabilities/key");
    fill(caps.sw, "capabilities/sw");
    fill(caps.props, "properties");
    return caps;
}

} // namespace tolvane
