#include "mainwindow.h"

#include "../../measure/framefile.h"
#include "plotpanel.h"
#include "wording.h"

#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>

#include <functional>

namespace irmcore::view {

namespace {

using app::measuring::Scale;
using app::measuring::ThermalFrame;

QString fileName(const char* what, const char* ending) {
    return QStringLiteral("%1-%2.%3")
        .arg(QLatin1String(what),
             QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")),
             QLatin1String(ending));
}

QString noteOf(const Snapshot& snapshot) {
    const ThermalFrame& frame = snapshot.frame;
    const QString note = QStringLiteral("%1\n%2 of %3 pixels are not OK; such have the nearest "
                                        "limit of the range\n%4")
                             .arg(app::measuring::meaningOf(Scale::centikelvin))
                             .arg(frame.notOk())
                             .arg(frame.status.size())
                             .arg(QDateTime::currentDateTime().toString(Qt::ISODateWithMs));
    return snapshot.settled ? note : note + QStringLiteral("\nnot calibrated: not to be relied on");
}

QString writeBytes(const QString& file, const QByteArray& bytes) {
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit())
        return QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
    return {};
}

QString writeImage(const QString& file, const QImage& image) {
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
    QImageWriter writer(&out, "png");
    if (!writer.write(image))
        return QStringLiteral("cannot make the picture: %1").arg(writer.errorString());
    if (!out.commit())
        return QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
    return {};
}

} // namespace

QFileDialog* MainWindow::makeDialog(const QString& title, const QString& filter,
                                    const QString& name) {
    auto* const dialog = new QFileDialog(this, title, m_plan.folder, filter);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::NonModal);
    if (!name.isEmpty()) {
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setDefaultSuffix(QFileInfo(name).suffix());
        dialog->selectFile(name);
    } else {
        dialog->setFileMode(QFileDialog::ExistingFile);
    }
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString& file) { m_plan.folder = QFileInfo(file).absolutePath(); });
    return dialog;
}

/// `write` returns what is wrong, or nothing.
void MainWindow::askWhereTo(const QString& title, const QString& filter, const QString& name,
                            const std::function<QString(const QString&)>& write) {
    QFileDialog* const dialog = makeDialog(title, filter, name);
    connect(dialog, &QFileDialog::fileSelected, this, [this, write](const QString& file) {
        const QString error = write(file);
        say(error.isEmpty() ? QStringLiteral("Saved %1.").arg(QFileInfo(file).fileName()) : error);
    });
    dialog->show();
}

void MainWindow::savePicture() {
    // What is seen now, not what is there when a name has been found.
    const QImage image = m_picture->rendered();
    if (image.isNull())
        return say(QStringLiteral("There is no picture yet."));
    askWhereTo(QStringLiteral("Save picture"), QStringLiteral("Pictures (*.png)"),
               fileName("picture", "png"),
               [image](const QString& file) { return writeImage(file, image); });
}

void MainWindow::saveTemperatures() {
    const std::shared_ptr<const Snapshot> snapshot = m_snapshot;
    if (!snapshot || snapshot->frame.celsius.empty())
        return say(QStringLiteral("There is no frame yet."));
    const QString note = noteOf(*snapshot);
    askWhereTo(
        QStringLiteral("Save temperatures"), QStringLiteral("Temperatures (*.png *.pgm *.csv)"),
        fileName("temperatures", "png"), [snapshot, note](const QString& file) {
            const QString ending = QFileInfo(file).suffix();
            if (ending != QLatin1String("png") && ending != QLatin1String("pgm") &&
                ending != QLatin1String("csv"))
                return QStringLiteral("A name ends with .png, .pgm or .csv.");
            QString error;
            app::measuring::writeFrame(snapshot->frame, Scale::centikelvin, note, file, error);
            return error;
        });
}

void MainWindow::savePlot() {
    const QByteArray bytes = m_plot->history().csv(m_tools.all());
    askWhereTo(QStringLiteral("Export readings over time"), QStringLiteral("Tables (*.csv)"),
               fileName("readings", "csv"),
               [bytes](const QString& file) { return writeBytes(file, bytes); });
}

void MainWindow::openRecording() {
    QFileDialog* const dialog =
        makeDialog(QStringLiteral("Open recording"), QStringLiteral("All files (*)"), QString());
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        Source source = m_plan.source;
        source.kind = SourceKind::recording;
        source.recording = toLocal(QFileInfo(file).absoluteFilePath());
        open(std::move(source));
    });
    dialog->show();
}

} // namespace irmcore::view
