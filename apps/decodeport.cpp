// The serial port's part of decode.h.
#include "../device/frame.h"
#include "decode.h"

#include <algorithm>

namespace irmcore::app {

namespace {

/// A number in a payload; a wider one is text.
struct Parameter {
    const char* name;
    std::size_t width;
};
constexpr std::size_t widestNumber = 4;

struct Command {
    std::uint8_t code;
    const char* name;
    std::array<Parameter, 2> sent; // an unnamed one is filling
    Parameter answered;
};

constexpr Parameter none{nullptr, 0};
constexpr std::array commands{
    Command{0x30, "autoShutter", {Parameter{"on", 1}, none}, none},
    Command{0x31, "insideShutter", {none, none}, none},
    Command{0x51, "insideShutterNoVsk", {none, none}, none},
    Command{0x52, "outsideShutter", {none, none}, none},
    Command{0x61, "readDeltaAd", {Parameter{nullptr, 4}, none}, {"deltaAd", 4}},
    Command{0x70, "setIntTime", {Parameter{"intTime", 2}, none}, none},
    Command{0x77, "readVsk", {none, none}, {"vsk", 2}},
    Command{0x78, "setVsk", {Parameter{"vsk", 2}, none}, none},
    Command{0x79, "readSum", {none, none}, {"sum", 2}},
    Command{0x80, "readCpuVersion", {none, none}, {"version", 15}},
    Command{0x81, "readFpgaVersion", {none, none}, {"version", 15}},
    Command{0x82, "changeTempRange", {Parameter{"intTime", 2}, Parameter{"vsk", 2}}, none},
    Command{0x84, "shutDown", {none, none}, none},
    Command{0x96, "readSensor", {Parameter{nullptr, 2}, none}, {"sensor", 2}},
};

const Command* commandOf(std::uint8_t code) {
    for (const Command& command : commands)
        if (command.code == code)
            return &command;
    return nullptr;
}

QString nameOf(const Command* command, std::uint8_t code) {
    return command != nullptr ? QString::fromLatin1(command->name)
                              : QStringLiteral("command %1").arg(code, 2, 16, QLatin1Char('0'));
}

void add(std::vector<Value>& to, const char* name, const QString& text, const QJsonValue& value) {
    to.push_back({QString::fromLatin1(name), text, value, {}});
}

void addParameter(std::vector<Value>& to, const Parameter& parameter, const std::uint8_t* bytes) {
    if (parameter.name == nullptr)
        return;
    if (parameter.width > widestNumber) {
        QString text;
        for (std::size_t i = 0; i < parameter.width; ++i)
            text += bytes[i] >= ' ' && bytes[i] < 0x7F ? QChar(bytes[i]) : QChar(QLatin1Char('.'));
        add(to, parameter.name, QLatin1Char('"') + text + QLatin1Char('"'), text);
    } else {
        const auto number = static_cast<qint64>(numberIn(bytes, parameter.width));
        add(to, parameter.name, QString::number(number), number);
    }
}

void addChecksum(std::vector<Value>& to, bool right) {
    const QString text = right ? QStringLiteral("right") : QStringLiteral("wrong");
    add(to, "checksum", text, text);
}

void addBytes(std::vector<Value>& to, const std::uint8_t* bytes, std::size_t n) {
    const QString text = hexOf(bytes, n);
    add(to, "bytes", text, text);
}

/// Where a pair of bytes begins; as far as it may still come when it is not there.
std::size_t find(const std::vector<std::uint8_t>& bytes, std::uint8_t first, std::uint8_t second) {
    for (std::size_t i = 0; i < bytes.size(); ++i)
        if (bytes[i] == first && (i + 1 == bytes.size() || bytes[i + 1] == second))
            return i;
    return bytes.size();
}

void drop(std::vector<std::uint8_t>& bytes, std::size_t n) {
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
}

} // namespace

Decoded PortDecoder::wrote(const std::uint8_t* bytes, std::size_t n) {
    Decoded decoded;
    m_sent.insert(m_sent.end(), bytes, bytes + n);
    bool strange = false;
    bool bad = false; // what follows is searched for another frame
    for (;;) {
        const std::size_t at = find(m_sent, 0xFF, 0xA5);
        strange = strange || (at > 0 && !bad);
        drop(m_sent, at);
        constexpr std::size_t head = 4;
        if (m_sent.size() < head)
            break;
        const std::uint8_t* frame = m_sent.data();
        const std::size_t length = frame[3];
        if (length > frame::maxPayload) {
            strange = true;
            drop(m_sent, 1);
            continue;
        }
        const std::size_t whole = length + frame::overhead;
        if (m_sent.size() < whole)
            break;
        const bool right = frame::checksum(frame + 2, length + 2) == frame[head + length];
        const bool end = frame[whole - 1] == 0x5A;
        const Command* command = commandOf(frame[2]);
        const QString name = nameOf(command, frame[2]);
        decoded.name += decoded.name.isEmpty() ? name : QStringLiteral(" + ") + name;
        const std::size_t wanted =
            command == nullptr ? 0 : command->sent[0].width + command->sent[1].width;
        if (command != nullptr && wanted == length && end) {
            addParameter(decoded.values, command->sent[0], frame + head);
            addParameter(decoded.values, command->sent[1], frame + head + command->sent[0].width);
        } else {
            addBytes(decoded.values, frame, whole);
        }
        addChecksum(decoded.values, right);
        m_replyBytes = command == nullptr ? 0 : command->answered.width + frame::replyOverhead;
        // After a bad one the core goes on looking at its second byte.
        bad = !right || !end;
        drop(m_sent, bad ? 1 : whole);
        m_received.clear();
    }
    if (decoded.name.isEmpty())
        decoded.name = m_sent.empty() ? QStringLiteral("no frame") : QStringLiteral("part");
    if (strange || decoded.values.empty())
        addBytes(decoded.values, bytes, n);
    return decoded;
}

Decoded PortDecoder::read(const std::uint8_t* bytes, std::size_t n, bool real) {
    Decoded decoded;
    m_received.insert(m_received.end(), bytes, bytes + n);
    const std::size_t at = find(m_received, 0x7F, 0xA5);
    const std::size_t there = m_received.size() - at;
    const std::uint8_t* reply = m_received.data() + at;
    const Command* command =
        there > frame::echoOffset ? commandOf(reply[frame::echoOffset]) : nullptr;
    const std::size_t whole =
        command == nullptr ? m_replyBytes : command->answered.width + frame::replyOverhead;
    if (command != nullptr && there >= whole) {
        decoded.name = QString::fromLatin1(command->name);
        if (command->answered.width == 0)
            add(decoded.values, "acknowledged", {}, true);
        addParameter(decoded.values, command->answered, reply + frame::payloadOffset);
        const std::size_t payload = whole - frame::replyOverhead;
        if (!real)
            addChecksum(decoded.values, frame::checksum(reply + 2, payload + 3) ==
                                            reply[payload + frame::payloadOffset]);
        if (at > 0 || (!real && reply[whole - 1] != 0x5A))
            addBytes(decoded.values, bytes, n);
        drop(m_received, at + whole);
        return decoded;
    }
    if (whole > 0 && m_received.size() >= whole) {
        decoded.name = QStringLiteral("no reply");
        m_received.clear();
    } else {
        decoded.name = QStringLiteral("part");
    }
    addBytes(decoded.values, bytes, n);
    constexpr std::size_t longest = 2 * frame::bufferBytes;
    if (m_received.size() > longest)
        m_received.clear();
    return decoded;
}

} // namespace irmcore::app
