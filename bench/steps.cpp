// One operation, so many times over, for whoever counts instructions:
//
//     irmcore-steps OPERATION TIMES
//
// The cost of one is the difference of two runs, divided by the difference of their times.
#include "measure/frametable.h"
#include "measure/literal.h"
#include "samplemodel.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace irmbench;

/// Where results go, so that none is left out.
volatile float s_sink = 0.0F;

/// A count for turn `i`, all over the table.
unsigned spread(long i) { return 28000U + static_cast<unsigned>(i * 7919 % 22500); }

void readings(long times) {
    const irmcore::Model model = sampleModel();
    const TempInfoTab table = sampleTable();
    irmcore::Terms terms = irmcore::termsOf(model);
    for (long i = 0; i < times; ++i) {
        if (!irmcore::sameModel(terms.of, model))
            terms = irmcore::termsOf(model);
        s_sink = irmcore::objectTemp(terms, table, sampleShutterTerm, sampleDrift, spread(i)).temp;
    }
}

/// The loop alone.
void nothing(long times) {
    for (long i = 0; i < times; ++i)
        s_sink = static_cast<float>(spread(i));
}

void literalReadings(long times) {
    const irmcore::Model model = sampleModel();
    const TempInfoTab table = sampleTable();
    for (long i = 0; i < times; ++i)
        s_sink =
            irmcore::literal::objectTemp(model, table, sampleShutterTerm, sampleDrift, spread(i))
                .temp;
}

/// `times` new counts; with `drifts` they were seen before, with another drift correction.
void entries(long times, bool drifts) {
    const irmcore::Terms terms = irmcore::termsOf(sampleModel());
    const TempInfoTab table = sampleTable();
    const auto frames = std::make_unique<irmcore::FrameTable>();
    std::vector<unsigned short> ad(static_cast<std::size_t>(times));
    std::vector<float> temp(ad.size());
    std::vector<unsigned char> status(ad.size());
    for (std::size_t i = 0; i < ad.size(); ++i)
        ad[i] = static_cast<unsigned short>(28000U + i * 22500 / ad.size());
    for (const float drift : {sampleDrift, sampleDrift + 1.0F}) {
        frames->convert({terms, table, sampleShutterTerm, drift}, ad.data(), ad.size(), temp.data(),
                        status.data());
        s_sink = temp.back();
        if (!drifts)
            break;
    }
}

/// `times` pixels of counts that are known.
void pixels(long times) {
    const irmcore::Terms terms = irmcore::termsOf(sampleModel());
    const TempInfoTab table = sampleTable();
    const auto frames = std::make_unique<irmcore::FrameTable>();
    const std::vector<unsigned short> ad(1000, 30000);
    std::vector<float> temp(ad.size());
    std::vector<unsigned char> status(ad.size());
    for (long done = 0; done < times; done += 1000)
        frames->convert({terms, table, sampleShutterTerm, sampleDrift}, ad.data(), ad.size(),
                        temp.data(), status.data());
    s_sink = temp.back();
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc == 3 ? argv[1] : "";
    const long times = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 0;
    if (times < 1 || times > 100'000'000) {
        std::fputs("usage: irmcore-steps nothing|reading|literal|entry|drift|pixel TIMES\n",
                   stderr);
        return 2;
    }
    if (what == "nothing")
        nothing(times);
    else if (what == "reading")
        readings(times);
    else if (what == "literal")
        literalReadings(times);
    else if (what == "entry" || what == "drift")
        entries(times, what == "drift");
    else if (what == "pixel")
        pixels(times);
    else
        return 2;
    return 0;
}
