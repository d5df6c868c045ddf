// Bounds-checked big-endian reads over bytes we did not write. Every read of font data goes
// through here: a read that would pass the end fails instead.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace talmo {

class ByteReader {
public:
    ByteReader() = default;
    explicit ByteReader(std::span<const std::byte> data) : data_(data) { }
    explicit ByteReader(std::span<const uint8_t> data) : data_(std::as_bytes(data)) { }

    size_t size() const { return data_.size(); }
    std::span<const std::byte> bytes() const { return data_; }

    // Written so that offset + length cannot wrap.
    bool has(size_t offset, size_t length) const { return offset <= data_.size() && length <= data_.size() - offset; }

    std::optional<uint8_t> u8(size_t offset) const
    {
        if (!has(offset, 1))
            return std::nullopt;
        return byte(offset);
    }
    std::optional<uint16_t> u16be(size_t offset) const
    {
        if (!has(offset, 2))
            return std::nullopt;
        return uint16_t(byte(offset) << 8 | byte(offset + 1));
    }
    std::optional<int16_t> i16be(size_t offset) const
    {
        auto v = u16be(offset);
        if (!v)
            return std::nullopt;
        return int16_t(*v);
    }
    std::optional<uint32_t> u32be(size_t offset) const
    {
        if (!has(offset, 4))
            return std::nullopt;
        return uint32_t(byte(offset)) << 24 | uint32_t(byte(offset + 1)) << 16 | uint32_t(byte(offset + 2)) << 8 |
               uint32_t(byte(offset + 3));
    }
    std::optional<int32_t> i32be(size_t offset) const
    {
        auto v = u32be(offset);
        if (!v)
            return std::nullopt;
        return int32_t(*v);
    }
    // The bytes [offset, offset + length), or nothing when they do not all lie inside.
    std::optional<ByteReader> sub(size_t offset, size_t length) const
    {
        if (!has(offset, length))
            return std::nullopt;
        return ByteReader(data_.subspan(offset, length));
    }

private:
    uint8_t byte(size_t i) const { return std::to_integer<uint8_t>(data_[i]); }

    std::span<const std::byte> data_;
};

} // namespace talmo
