#include "tapeinmemory.h"

#include "../../device/registers.h"
#include "../../sim/wire.h"
#include "../recording.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cstring>

namespace irmcore::view {

namespace {

using Call = irmsim::Observation::Call;

// Commands after which the core calibrates, by their code: the shutter's, the integration time's
// and the range's.
constexpr std::array<std::uint8_t, 5> calibrating{0x31, 0x51, 0x52, 0x70, 0x82};
constexpr std::size_t codeOffset = 2; // of a command's frame

void append(std::vector<std::uint64_t>& to, irmsim::WireHeader header, const QByteArray& bytes) {
    constexpr std::size_t word = sizeof(std::uint64_t);
    static_assert(sizeof header % word == 0 && irmsim::wireAlign == word);
    const auto count = static_cast<std::size_t>(bytes.size());
    const std::size_t at = to.size();
    to.resize(at + (sizeof header + count + word - 1) / word);
    header.size = static_cast<std::uint32_t>((to.size() - at) * word);
    std::memcpy(&to[at], &header, sizeof header);
    if (count > 0)
        std::memcpy(&to[at + sizeof header / word], bytes.constData(), count);
}

void lookThrough(TapeInMemory& recording) {
    const auto& calls = recording.tape.calls;
    if (calls.empty())
        return;
    const irmsim::Time begin = calls.front().real ? calls.front().time : irmsim::Time(0);
    recording.seconds = std::max(irmsim::secondsOf(calls.back().time - begin), 0.0);
    for (const irmsim::Observation& call : calls) {
        if (call.call == Call::read && !call.port && call.address == reg::frame.address) {
            const bool parted = call.length == reg::framePart384;
            recording.width = parted ? 384 : 160;
            recording.height = parted ? 288 : 120;
        }
        if (call.call == Call::write && call.port && call.result > static_cast<long>(codeOffset) &&
            std::find(calibrating.begin(), calibrating.end(), call.bytes[codeOffset]) !=
                calibrating.end())
            recording.calibrations.push_back(irmsim::secondsOf(call.time - begin));
    }
}

} // namespace

std::optional<TapeInMemory> loadTape(const QString& name, std::string& error) {
    QFile file(name);
    const uchar* bytes = nullptr;
    if (!file.open(QIODevice::ReadOnly) ||
        (file.size() > 0 && (bytes = file.map(0, file.size())) == nullptr)) {
        error = file.errorString().toStdString();
        return std::nullopt;
    }
    TapeInMemory result;
    const app::RecordingEnd end =
        app::readRecording(reinterpret_cast<const char*>(bytes), file.size(),
                           {[&](const app::RecordingHead& head) {
                                result.surroundings = head.surroundings;
                                result.range = head.range;
                            },
                            [&](const irmsim::WireHeader& header, const QByteArray& transferred) {
                                append(result.bytes, header, transferred);
                            }});
    if (end.broken) {
        error = end.text.toStdString();
        return std::nullopt;
    }
    result.complete = end.complete;
    auto tape = irmsim::Tape::of(reinterpret_cast<const std::uint8_t*>(result.bytes.data()),
                                 result.bytes.size() * sizeof(std::uint64_t), error);
    if (!tape)
        return std::nullopt;
    result.tape = std::move(*tape);
    lookThrough(result);
    return result;
}

} // namespace irmcore::view
