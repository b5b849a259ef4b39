#include "../commands.h"
#include "../results.h"
#include "framefile.h"
#include "print.h"
#include "session.h"

#include <algorithm>
#include <cmath>
#include <csignal>

namespace irmcore::app::measuring {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onSignal(int /*number*/) { interrupted = 1; }

/// The first interruption ends the work between two readings, a second one the program.
void catchInterruptions() {
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // seen when writing fails
}

QString noteOf(const MeasurePlan& plan, const Batch& batch) {
    QString note = QStringLiteral("%1\n%2 of %3 pixels are not OK")
                       .arg(meaningOf(plan.scale))
                       .arg(batch.frame->notOk())
                       .arg(batch.frame->status.size());
    if (plan.scale != Scale::counts)
        note += QStringLiteral("; such have the nearest limit of the range");
    return note + QLatin1Char('\n') + textOf(batch.time);
}

/// Writes the frame's files. Their names, or none and a text in `error`.
QStringList writeFrames(const MeasurePlan& plan, const Batch& batch, QString& error) {
    QStringList files;
    for (const QString& name : plan.frames) {
        const QString file = plan.every ? numberedName(name, batch.number) : name;
        if (!writeFrame(*batch.frame, plan.scale, noteOf(plan, batch), file, error))
            return {};
        files.append(file);
    }
    return files;
}

/// Says once what a frame's files hold, and what did not fit.
void explainFrame(const MeasurePlan& plan, const Batch& batch) {
    const bool onlyCsv = std::all_of(plan.frames.begin(), plan.frames.end(), [](const QString& f) {
        return f.endsWith(QLatin1String(".csv"));
    });
    if (onlyCsv)
        return;
    if (batch.number == 1)
        complain(QStringLiteral("frames hold ") + meaningOf(plan.scale));
    if (const int cut = wordsOf(*batch.frame, plan.scale).cut; cut > 0)
        complain(QStringLiteral("%1 pixels of reading %2 are beyond the scale's end; --scale "
                                "decikelvin has room for them")
                     .arg(cut)
                     .arg(batch.number));
}

/// Takes one reading after another. Returns the exit code.
class Work {
public:
    Work(const MeasurePlan& plan, const Results& results, Session& session)
        : m_plan(plan), m_results(results), m_session(session) {}

    int run() {
        QString error;
        if (!m_session.prepare(error) || !m_session.start(error)) {
            complain(error);
            return exitErrors;
        }
        printHeader(m_results.stream(), m_plan.format);
        const double begin = m_session.seconds();
        double steps = 0.0;
        for (int number = 1; interrupted == 0; ++number) {
            if (!take(number))
                return exitErrors;
            if (m_plan.count != 0 && number >= m_plan.count)
                break;
            // What a calibration round made late is left out, not caught up with.
            const double late = (m_session.seconds() - begin) / *m_plan.every;
            steps = std::max(steps + 1.0, std::ceil(late));
            m_session.sleepUntil(begin + steps * *m_plan.every, &interrupted);
        }
        return m_missed ? exitErrors : exitClean;
    }

private:
    /// One reading. False when the work is to end here.
    bool take(int number) {
        QString error;
        const bool open = m_session.started() || m_session.start(error);
        std::optional<Batch> batch = open ? m_session.measure(error) : std::nullopt;
        if (!batch) {
            m_missed = true;
            if (!m_lost && m_plan.every)
                error += QStringLiteral("; trying again every %1 s").arg(*m_plan.every);
            if (!m_lost)
                complain(error);
            m_lost = true;
            return m_plan.every.has_value();
        }
        if (m_lost)
            complain(QStringLiteral("the camera is back"));
        m_lost = false;
        batch->number = number;
        return deliver(*batch);
    }

    bool deliver(const Batch& batch) {
        QString error;
        QStringList files;
        if (!m_plan.frames.empty()) {
            files = writeFrames(m_plan, batch, error);
            if (error.isEmpty())
                explainFrame(m_plan, batch);
        }
        if (error.isEmpty()) {
            printBatch(m_results.stream(), m_plan.format, batch, files);
            if (!m_results.delivered())
                error = QStringLiteral("the results could not be written");
        }
        if (!error.isEmpty())
            complain(error);
        return error.isEmpty();
    }

    const MeasurePlan& m_plan;
    const Results& m_results;
    Session& m_session;
    bool m_lost = false;
    bool m_missed = false;
};

} // namespace

} // namespace irmcore::app::measuring

using namespace irmcore::app::measuring;

int irmcore::app::runMeasure(const QStringList& words) {
    int exitCode = exitUsage;
    const std::optional<MeasurePlan> plan = parseMeasure(words, exitCode);
    if (!plan)
        return exitCode;
    const bool png = std::any_of(plan->frames.begin(), plan->frames.end(), [](const QString& f) {
        return f.endsWith(QLatin1String(".png"));
    });
    if (png && !writesPng()) {
        complain(QStringLiteral("this build has no pictures (Qt Gui was missing)"));
        return exitErrors;
    }
    catchInterruptions();
    const Results results(plan->verbose);
    if (results.stream() == nullptr) {
        complain(QStringLiteral("standard output cannot be kept"));
        return exitErrors;
    }
    Session session(*plan);
    return Work(*plan, results, session).run();
}
