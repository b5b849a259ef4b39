#include "print.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cmath>

namespace irmcore::app::measuring {

namespace {

using Kind = Finding::Kind;

constexpr std::array kindNames{"spot", "hottest", "coldest", "area", "line", "frame"};
constexpr std::array partNames{"max", "min", "mean"}; // of an area or frame

QLatin1String nameOf(Kind kind) { return QLatin1String(kindNames[static_cast<std::size_t>(kind)]); }

bool hasParts(Kind kind) { return kind == Kind::area || kind == Kind::frame; }

/// Four decimals: a reading has no more to say, and a float's digits would only look like it.
double shortened(double celsius) { return std::round(celsius * 1e4) / 1e4; }

QString celsiusOf(const Measured& value) {
    const QString text = QStringLiteral("%1 °C").arg(value.celsius, 0, 'f', 2);
    return value.status == QLatin1String("OK") ? text : text + QLatin1Char(' ') + value.status;
}

QString placeOf(Pixel at) { return QStringLiteral("%1,%2").arg(at.x).arg(at.y); }

void print(std::FILE* to, const QString& line) {
    std::fprintf(to, "%s\n", line.toUtf8().constData());
}

// --- text ---

/// "max 37.01 °C at 12,13".
QString partText(std::size_t i, const Measured& part) {
    QString text = QLatin1String(partNames[i]) + QLatin1Char(' ') + celsiusOf(part);
    if (part.at)
        text += QStringLiteral(" at ") + placeOf(*part.at);
    return text;
}

void printProfile(std::FILE* to, const std::vector<Measured>& profile) {
    constexpr std::size_t inRow = 10;
    QString row;
    for (std::size_t i = 0; i < profile.size(); ++i) {
        const bool ok = profile[i].status == QLatin1String("OK");
        row += (ok ? QString::number(profile[i].celsius, 'f', 2) : profile[i].status)
                   .rightJustified(8);
        if (i % inRow == inRow - 1 || i + 1 == profile.size()) {
            print(to, QStringLiteral("    ") + row);
            row.clear();
        }
    }
}

void printText(std::FILE* to, const Batch& batch, const QStringList& files) {
    QString head = textOf(batch.time);
    if (batch.cameraSeconds)
        head += QStringLiteral("  camera %1 s").arg(*batch.cameraSeconds, 0, 'f', 3);
    print(to, head);
    for (const Finding& finding : batch.findings) {
        QString text = nameOf(finding.kind);
        if (finding.number > 0)
            text += QStringLiteral(" %1").arg(finding.number);
        text = QStringLiteral("  ") + text.leftJustified(9);
        if (finding.span)
            text += placeOf(finding.span->from) + QStringLiteral(" to ") +
                    placeOf(finding.span->to) + QStringLiteral("  ");
        if (hasParts(finding.kind)) {
            QStringList parts;
            for (std::size_t i = 0; i < finding.values.size(); ++i)
                parts.append(partText(i, finding.values[i]));
            text += parts.join(QStringLiteral(", "));
        } else if (finding.kind != Kind::line) {
            text += placeOf(*finding.values.front().at).leftJustified(9) +
                    celsiusOf(finding.values.front());
        }
        if (finding.kind == Kind::frame && batch.frame->notOk() > 0)
            text += QStringLiteral("  %1 pixels are not OK").arg(batch.frame->notOk());
        if (finding.kind == Kind::frame)
            text += QStringLiteral("  in ") + files.join(QStringLiteral(", "));
        print(to, text);
        if (finding.kind == Kind::line)
            printProfile(to, finding.values);
    }
}

// --- JSON ---

QJsonObject jsonOf(const Measured& value) {
    QJsonObject object{{QStringLiteral("status"), value.status},
                       {QStringLiteral("temperature"), shortened(value.celsius)}};
    if (value.ad)
        object[QStringLiteral("ad")] = *value.ad;
    if (value.at) {
        object[QStringLiteral("x")] = value.at->x;
        object[QStringLiteral("y")] = value.at->y;
    }
    return object;
}

QJsonArray jsonOf(const Span& span) { return {span.from.x, span.from.y, span.to.x, span.to.y}; }

void printJson(std::FILE* to, const Batch& batch, const QStringList& files) {
    for (const Finding& finding : batch.findings) {
        QJsonObject object;
        if (hasParts(finding.kind)) {
            for (std::size_t i = 0; i < finding.values.size(); ++i)
                object[QLatin1String(partNames[i])] = jsonOf(finding.values[i]);
        } else if (finding.kind == Kind::line) {
            QJsonArray profile;
            for (const Measured& value : finding.values)
                profile.append(jsonOf(value));
            object[QStringLiteral("profile")] = profile;
        } else {
            object = jsonOf(finding.values.front());
        }
        if (finding.span)
            object[QStringLiteral("place")] = jsonOf(*finding.span);
        if (finding.kind == Kind::frame) {
            object[QStringLiteral("notOk")] = batch.frame->notOk();
            object[QStringLiteral("files")] = QJsonArray::fromStringList(files);
        }
        object[QStringLiteral("time")] = textOf(batch.time);
        if (batch.cameraSeconds)
            object[QStringLiteral("cameraTime")] = shortened(*batch.cameraSeconds);
        object[QStringLiteral("reading")] = batch.number;
        object[QStringLiteral("what")] = QString(nameOf(finding.kind));
        if (finding.number > 0)
            object[QStringLiteral("number")] = finding.number;
        print(to, QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
    }
}

// --- CSV ---

void printCsv(std::FILE* to, const Batch& batch) {
    QStringList head{textOf(batch.time),
                     batch.cameraSeconds ? QString::number(*batch.cameraSeconds, 'f', 3)
                                         : QString(),
                     QString::number(batch.number)};
    for (const Finding& finding : batch.findings)
        for (std::size_t i = 0; i < finding.values.size(); ++i) {
            const Measured& value = finding.values[i];
            QString what = nameOf(finding.kind);
            if (hasParts(finding.kind))
                what += QLatin1Char(' ') + QLatin1String(partNames[i]);
            QStringList cells = head;
            cells << what << (finding.number > 0 ? QString::number(finding.number) : QString())
                  << (value.at ? QString::number(value.at->x) : QString())
                  << (value.at ? QString::number(value.at->y) : QString())
                  << (value.ad ? QString::number(*value.ad) : QString()) << value.status
                  << QString::number(value.celsius, 'f', 4);
            print(to, cells.join(QLatin1Char(',')));
        }
}

} // namespace

QString textOf(const QDateTime& time) {
    QString text = time.toString(Qt::ISODateWithMs);
    if (text.endsWith(QLatin1Char('Z')))
        text.replace(text.size() - 1, 1, QStringLiteral("+00:00"));
    return text;
}

void printHeader(std::FILE* to, MeasurePlan::Format format) {
    if (format == MeasurePlan::Format::csv)
        print(to, QStringLiteral("time,cameraTime,reading,what,number,x,y,ad,status,temperature"));
}

void printBatch(std::FILE* to, MeasurePlan::Format format, const Batch& batch,
                const QStringList& files) {
    switch (format) {
    case MeasurePlan::Format::text:
        return printText(to, batch, files);
    case MeasurePlan::Format::json:
        return printJson(to, batch, files);
    case MeasurePlan::Format::csv:
        return printCsv(to, batch);
    }
}

} // namespace irmcore::app::measuring
