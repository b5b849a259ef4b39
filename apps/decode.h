#pragma once

#include "../device/registers.h"

#include <QJsonValue>
#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace irmcore::app {

/// Something that was transferred.
struct Value {
    QString name;
    QString text; ///< for people, with its unit; empty when the name says it all
    QJsonValue value;
    QString unit;
};

/// What a transfer means.
struct Decoded {
    QString name;              ///< "pointAd[3]", "frameMaxX..frameMinY", "setVsk"
    std::vector<Value> values; ///< a single one may have the name of the whole
};

/// The values in one line: "x 80, y 60".
QString textOf(const Decoded& decoded);
/// Bytes as "FF A5 31"; of more than 24, the first of them and their number.
QString hexOf(const std::uint8_t* bytes, std::size_t n);
/// The little-endian number in up to 6 bytes.
std::int64_t numberIn(const std::uint8_t* bytes, std::size_t n);

/// Gives the transfers of the FPGA device, one after the other, their registers' names and values.
/// It follows two things: which part of a frame comes next, and whether a block of addresses that
/// points and areas share was last written as points or as an area (at first, an area). The line
/// positions, which are also area 5's first bounds, are called line positions.
class RegisterDecoder {
public:
    /// `length` bytes were asked for and `n` transferred, none of a failed transfer.
    Decoded decode(bool write, std::uint32_t address, std::size_t length, const std::uint8_t* bytes,
                   std::size_t n);

private:
    /// The bytes of a transfer that belong together.
    struct Piece {
        const reg::Entry* entry = nullptr; // null: no register
        unsigned slot = 0;
        unsigned part = 0;
        std::size_t size = 1;
        bool whole = false; // a register or one of its words
    };
    Piece pieceAt(bool write, std::uint32_t address, std::size_t left, std::size_t length) const;
    bool isArea(bool write, std::uint32_t address, std::size_t length) const;
    std::vector<Value> frameValues(std::size_t length, const std::uint8_t* bytes, std::size_t n);

    std::array<bool, 2> m_area{true, true}; // the areas that share addresses with points
    unsigned m_framePart = 0;
};

/// The same for what goes through the serial port. Frames may come in pieces.
class PortDecoder {
public:
    Decoded wrote(const std::uint8_t* bytes, std::size_t n);
    /// Of the bytes of a reply beside echo and payload only those of the simulated core are known:
    /// a real one's checksum is not judged.
    Decoded read(const std::uint8_t* bytes, std::size_t n, bool real);
    /// What has come is thrown away.
    void flush() { m_received.clear(); }

private:
    std::vector<std::uint8_t> m_sent;
    std::vector<std::uint8_t> m_received;
    std::size_t m_replyBytes = 0; // of the reply to the last command; 0: not known
};

} // namespace irmcore::app
