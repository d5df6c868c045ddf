// UUIDs: 16 bytes compared as bytes, never as text; written in the canonical upper-case form.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace talmo {

class Uuid {
public:
    using Bytes = std::array<uint8_t, 16>;

    Uuid() = default; // the nil UUID
    explicit Uuid(const Bytes& b) : bytes_(b) { }

    // "7680F90E-ADCD-11D9-85C8-000A95BDF8C8" in any case; nullopt for anything else
    // (wrong length, misplaced dashes, non-hex digits, surrounding text).
    static std::optional<Uuid> fromString(std::string_view text);
    // Exactly 16 bytes; nullopt for another length.
    static std::optional<Uuid> fromBytes(std::span<const uint8_t> bytes);
    // A new random UUID.
    static Uuid generate();

    const Bytes& bytes() const { return bytes_; }
    bool isNil() const;
    // Canonical upper-case form.
    std::string toString() const;

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    Bytes bytes_{};
};

} // namespace talmo
