// Calculations alone: readings, table look-ups, air, and the results of all counts anew.
#include "bench.h"
#include "measure/frametable.h"
#include "measure/literal.h"
#include "measure/transmission.h"
#include "samplemodel.h"
#include "turns.h"

#include <cmath>
#include <memory>
#include <vector>

namespace irmbench {

namespace {

constexpr char prescribed[] = "the prescribed calculation";
constexpr char power[] = "one `pow`";

/// Counts all over the table, one after the other.
class Counts {
public:
    unsigned next() { return 28000U + (m_turn += 7919U) % 22500U; }

private:
    unsigned m_turn = 0;
};

/// Temperatures from -20 to 150 °C.
class Celsius {
public:
    float next() { return static_cast<float>((m_turn += 7919U) % 17000U) * 0.01F - 20.0F; }

private:
    unsigned m_turn = 0;
};

void registerReadings() {
    static const irmcore::Model model = sampleModel();
    static const TempInfoTab table = sampleTable();
    static irmcore::Terms terms = irmcore::termsOf(model);
    compare(
        "reading/maths", {prescribed},
        [counts = Counts()]() mutable {
            if (!irmcore::sameModel(terms.of, model))
                terms = irmcore::termsOf(model);
            benchmark::DoNotOptimize(
                irmcore::objectTemp(terms, table, sampleShutterTerm, sampleDrift, counts.next()));
        },
        [counts = Counts()]() mutable {
            benchmark::DoNotOptimize(irmcore::literal::objectTemp(model, table, sampleShutterTerm,
                                                                  sampleDrift, counts.next()));
        });
    compare(
        "reading/inverse", {"its prescribed powers and roots"},
        [celsius = Celsius()]() mutable {
            benchmark::DoNotOptimize(
                irmcore::objectAd(model, table, sampleShutterTerm, celsius.next()));
        },
        [celsius = Celsius()]() mutable {
            benchmark::DoNotOptimize(
                irmcore::literal::toTable(irmcore::literal::seenTemp(model, celsius.next())));
        });
    compare(
        "table/temperature-of-count", {prescribed},
        [counts = Counts()]() mutable {
            benchmark::DoNotOptimize(irmcore::adToTableTemp(table, counts.next()));
        },
        [counts = Counts()]() mutable {
            const irmcore::TableTemp found = irmcore::literal::findTemp(table, counts.next());
            IrTempStru reading = irmcore::readingOf(found);
            if (found.place == irmcore::Place::inside)
                reading.temp = irmcore::literal::fromTable(found.celsius);
            benchmark::DoNotOptimize(reading);
        });
    compare(
        "table/count-of-temperature", {"its prescribed powers and root"},
        [celsius = Celsius()]() mutable {
            benchmark::DoNotOptimize(irmcore::tempToTableAd(table, celsius.next()));
        },
        [celsius = Celsius()]() mutable {
            benchmark::DoNotOptimize(irmcore::literal::toTable(celsius.next()));
        });
}

void registerAir() {
    const auto onePower = [celsius = Celsius()]() mutable {
        benchmark::DoNotOptimize(std::pow(static_cast<double>(celsius.next()) + 273.15, 0.25));
    };
    compare(
        "air/transmission", {power},
        [celsius = Celsius()]() mutable {
            const float t = celsius.next();
            benchmark::DoNotOptimize(
                irmcore::transmission(t * 0.25F, 0.5F, static_cast<int>(t) + 30));
        },
        onePower);
    compare(
        "air/dew-point", {power},
        [celsius = Celsius()]() mutable {
            benchmark::DoNotOptimize(irmcore::dewPoint(celsius.next() * 0.25F, 0.5F));
        },
        onePower);
}

/// A frame in which every count of the table occurs once.
struct Ramp {
    Ramp() : ad(22500), temp(ad.size()), status(ad.size()) {
        for (std::size_t i = 0; i < ad.size(); ++i)
            ad[i] = static_cast<unsigned short>(28000U + i);
    }
    std::vector<unsigned short> ad;
    std::vector<float> temp;
    std::vector<unsigned char> status;
};

/// Converts the ramp with two sets of conditions by turns.
void registerRebuild(const char* name, const irmcore::Model& other, float otherDrift) {
    struct State {
        Ramp ramp;
        irmcore::FrameTable frames;
        TempInfoTab table = sampleTable();
        irmcore::Terms terms[2];
        float drifts[2];
    };
    const auto state = std::make_shared<State>();
    state->terms[0] = irmcore::termsOf(sampleModel());
    state->terms[1] = irmcore::termsOf(other);
    state->drifts[0] = sampleDrift;
    state->drifts[1] = otherDrift;
    compare(
        name, {"the prescribed calculation of each"},
        [state, turn = 0U]() mutable {
            Ramp& ramp = state->ramp;
            const unsigned now = ++turn % 2;
            state->frames.convert(
                {state->terms[now], state->table, sampleShutterTerm, state->drifts[now]},
                ramp.ad.data(), ramp.ad.size(), ramp.temp.data(), ramp.status.data());
            benchmark::ClobberMemory();
        },
        [state, turn = 0U]() mutable {
            Ramp& ramp = state->ramp;
            const unsigned now = ++turn % 2;
            for (std::size_t i = 0; i < ramp.ad.size(); ++i) {
                const IrTempStru reading =
                    irmcore::literal::objectTemp(state->terms[now].of, state->table,
                                                 sampleShutterTerm, state->drifts[now], ramp.ad[i]);
                ramp.temp[i] = reading.temp;
                ramp.status[i] = static_cast<unsigned char>(reading.status[0]);
            }
            benchmark::ClobberMemory();
        });
}

} // namespace

void registerConversions() {
    registerReadings();
    registerAir();
    irmcore::Model emissivity = sampleModel();
    emissivity.emiss = 0.9F;
    irmcore::Model range = sampleModel();
    range.rangeMax = 140;
    registerRebuild("rebuild/full", emissivity, sampleDrift);
    registerRebuild("rebuild/range", range, sampleDrift);
    registerRebuild("rebuild/drift", sampleModel(), sampleDrift + 1.0F);
}

} // namespace irmbench
