// Holds every conversion of a count against the prescribed calculation, bit by bit, over all 65,536
// counts with random parameters, tables and drift:
//
//     irmcore-identity [SETS [SEED]]
//
// Exit 1 with the first differing counts on standard error.
#include "bench/randommodel.h"
#include "measure/frametable.h"
#include "measure/literal.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using namespace irmbench;

long s_differing = 0;

void differs(const char* what, const Conditions& at, unsigned ad, double quick, double literal) {
    if (++s_differing <= 10)
        std::fprintf(stderr,
                     "%s: count %u: %a, prescribed %a; e %a offset %a air %a reflected %a trans %a "
                     "term %a drift %a\n",
                     what, ad, quick, literal, static_cast<double>(at.model.emiss),
                     static_cast<double>(at.model.offset), static_cast<double>(at.model.envTemp),
                     static_cast<double>(at.model.reflecTemp), static_cast<double>(at.model.trans),
                     static_cast<double>(at.shutterDelta), static_cast<double>(at.deltaTemp));
}

template <typename T>
bool same(const T& a, const T& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// The status code that a whole frame gives.
unsigned char codeOf(const IrTempStru& reading) {
    constexpr const char* texts[] = {"OK", "L", "LE", "HE", "H"};
    for (unsigned char code = 0; code < 5; ++code)
        if (std::strcmp(reading.status, texts[code]) == 0)
            return code;
    return 255;
}

} // namespace

int main(int argc, char** argv) {
    const long sets = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 20;
    Random random(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
    constexpr unsigned counts = 65536;
    std::vector<unsigned short> words(counts);
    for (unsigned ad = 0; ad < counts; ++ad)
        words[ad] = static_cast<unsigned short>(ad);
    std::vector<float> temps(counts);
    std::vector<unsigned char> statuses(counts);
    const auto frames = std::make_unique<irmcore::FrameTable>();
    long converted = 0;
    for (long set = 0; set < sets; ++set) {
        Conditions at = random.conditions();
        // The second round changes nothing but the drift correction.
        for (const float drift : {at.deltaTemp, random.drift()}) {
            at.deltaTemp = drift;
            const irmcore::Terms terms = irmcore::termsOf(at.model);
            frames->convert({terms, at.table, at.shutterDelta, at.deltaTemp}, words.data(), counts,
                            temps.data(), statuses.data());
            for (unsigned ad = 0; ad < counts; ++ad) {
                const IrTempStru expected = irmcore::literal::objectTemp(
                    at.model, at.table, at.shutterDelta, at.deltaTemp, ad);
                const IrTempStru quick =
                    irmcore::objectTemp(terms, at.table, at.shutterDelta, at.deltaTemp, ad);
                converted += expected.temp > -4000.0F && expected.temp < 4000.0F ? 1 : 0;
                if (!same(quick, expected))
                    differs("reading", at, ad, static_cast<double>(quick.temp),
                            static_cast<double>(expected.temp));
                if (!same(temps[ad], expected.temp) || statuses[ad] != codeOf(expected))
                    differs("frame", at, ad, static_cast<double>(temps[ad]),
                            static_cast<double>(expected.temp));
            }
        }
        for (int i = 0; i < 4096; ++i) {
            const float celsius = random.celsius();
            const float seen = irmcore::seenTemp(at.model, celsius);
            const float prescribed = irmcore::literal::seenTemp(at.model, celsius);
            // One NaN is as good as another.
            if (!same(seen, prescribed) && !(std::isnan(seen) && std::isnan(prescribed)))
                differs("seenTemp", at, 0, static_cast<double>(celsius), 0);
            if (!same(irmcore::toTable(celsius), irmcore::literal::toTable(celsius)))
                differs("toTable", at, 0, static_cast<double>(celsius), 0);
        }
    }
    std::printf("%ld sets of parameters, %ld counts inside the table, %ld differing\n", sets,
                converted, s_differing);
    return s_differing == 0 && converted > 0 ? 0 : 1;
}
