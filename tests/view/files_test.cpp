// Files that the window writes and reads.
#include "apps/view/window/wording.h"
#include "windowfixture.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

namespace irmcore::view::testing {
namespace {

class Files : public Window {
protected:
    /// The dialog that an action opens, without waiting for it.
    QFileDialog* dialogOf(const char* action) {
        find<QAction>(action).trigger();
        const auto dialogs =
            m_window->findChildren<QFileDialog*>(QString(), Qt::FindDirectChildrenOnly);
        EXPECT_EQ(dialogs.size(), 1) << action;
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << action;
        return dialogs.isEmpty() ? nullptr : dialogs.constFirst();
    }
    /// Has an action write a file, as if its name had been chosen; what the window says then.
    std::string save(const char* action, const QString& file) {
        QFileDialog* const dialog = dialogOf(action);
        if (dialog == nullptr)
            return "no dialog";
        Q_EMIT dialog->fileSelected(file);
        delete dialog;
        return find<QLabel>("message").text().toStdString();
    }
    QString file(const char* name) const { return m_place.filePath(QLatin1String(name)); }
    static QByteArray contents(const QString& name) {
        QFile in(name);
        EXPECT_TRUE(in.open(QIODevice::ReadOnly)) << name.toStdString();
        return in.readAll();
    }

    QTemporaryDir m_place;
};

TEST_F(Files, HoldThePictureAsItIsSeen) {
    open();
    find<QAction>("marksAction").setChecked(false);
    find<QAction>("freezeAction").setChecked(true);
    ASSERT_TRUE(until([](const Snapshot& s) { return s.frozen; }));
    const Snapshot snapshot = *m_window->snapshot();
    EXPECT_EQ(save("savePicture", file("seen.png")), "Saved seen.png.");
    EXPECT_EQ(contents(file("seen.png")).left(8), QByteArray("\x89PNG\r\n\x1A\n"));
    const QImage image(file("seen.png"));
    EXPECT_EQ(image.height(), 2 * 288 + 20);
    EXPECT_GT(image.width(), 2 * 384 + 20 + 30); // and the bar
    const int scale = snapshot.picture.width / 384;
    for (const Pixel p : {warm, cold, Pixel{3, 280}, {380, 5}}) {
        const auto at =
            static_cast<std::size_t>(p.y * scale * snapshot.picture.width + p.x * scale);
        EXPECT_EQ(image.pixel(10 + 2 * p.x, 10 + 2 * p.y), snapshot.picture.pixels[at]);
    }
    EXPECT_NE(image.pixel(10 + 2 * warm.x, 10 + 2 * warm.y),
              image.pixel(10 + 2 * cold.x, 10 + 2 * cold.y));
    // As a person types it, without an ending.
    QFileDialog* const dialog = dialogOf("savePicture");
    dialog->findChild<QLineEdit*>()->setText(file("typed"));
    QMetaObject::invokeMethod(dialog, "accept");
    EXPECT_TRUE(QFile::exists(file("typed.png")));
}

TEST_F(Files, HoldTheTemperaturesOfEveryPixel) {
    open();
    find<QAction>("freezeAction").setChecked(true);
    ASSERT_TRUE(until([](const Snapshot& s) { return s.frozen; }));
    for (const char* name : {"frame.csv", "frame.pgm", "frame.png"})
        EXPECT_EQ(save("saveTemperatures", file(name)), "Saved " + std::string(name) + ".");
    const QList<QByteArray> rows = contents(file("frame.csv")).split('\n');
    ASSERT_EQ(rows.size(), 289);
    EXPECT_TRUE(rows.back().isEmpty());
    const QByteArray pgm = contents(file("frame.pgm"));
    const QByteArray size("384 288\n65535\n");
    const auto words = pgm.indexOf(size) + size.size();
    EXPECT_TRUE(pgm.startsWith("P5\n# hundredths of a kelvin: celsius = value / 100 - 273.15\n"));
    ASSERT_EQ(pgm.size() - words, 2 * 384 * 288);
    const QImage png(file("frame.png"));
    ASSERT_EQ(png.size(), QSize(384, 288));
    ASSERT_EQ(png.format(), QImage::Format_Grayscale16);
    const auto& frame = m_window->snapshot()->frame;
    const std::pair<Pixel, double> known[] = {{cold, -10.0}, {warm, 37.0}, {{336, 72}, 60.0}};
    for (const auto& [pixel, celsius] : known) {
        const QList<QByteArray> fields = rows[pixel.y].split(',');
        ASSERT_EQ(fields.size(), 384);
        const double shown = static_cast<double>(frame.celsius[frame.index(pixel)]);
        EXPECT_NEAR(shown, celsius, 0.3);
        EXPECT_NEAR(fields[pixel.x].toDouble(), shown, 0.0051);
        const auto at = words + 2 * (384 * pixel.y + pixel.x);
        const int word =
            256 * static_cast<unsigned char>(pgm[at]) + static_cast<unsigned char>(pgm[at + 1]);
        EXPECT_NEAR(word, 100.0 * (shown + 273.15), 0.51);
        const auto* const line = reinterpret_cast<const quint16*>(png.constScanLine(pixel.y));
        EXPECT_EQ(line[pixel.x], word);
    }
}

TEST_F(Files, SayWhatIsWrongWithoutADialog) {
    open();
    ASSERT_TRUE(reads(place(MouseMode::spot, warm, warm), 37.0));
    const double before = m_window->plotted();
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_window->plotted() > before; }, 30000));
    EXPECT_TRUE(find<QPushButton>("savePlot").isEnabled());
    const struct {
        const char* action;
        const char* file;
        const char* said;
    } cases[] = {
        {"savePicture", "missing/seen.png", "cannot write "},
        {"saveTemperatures", "missing/frame.csv", "cannot write "},
        {"saveTemperatures", "missing/frame.png", "cannot write "},
        {"saveTemperatures", "frame.jpg", "A name ends with .png, .pgm or .csv."},
        {"saveTemperatures", "frame", "A name ends with .png, .pgm or .csv."},
    };
    for (const auto& c : cases) {
        const std::string said = save(c.action, file(c.file));
        EXPECT_EQ(said.rfind(c.said, 0), 0U) << said;
        EXPECT_FALSE(QFile::exists(file(c.file)));
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
    find<QPushButton>("savePlot").click();
    auto* const dialog = m_window->findChild<QFileDialog*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_NE(dialog, nullptr);
    Q_EMIT dialog->fileSelected(file("plot.csv"));
    delete dialog;
    const QList<QByteArray> rows = contents(file("plot.csv")).split('\n');
    ASSERT_GT(rows.size(), 2);
    EXPECT_EQ(rows[0], "seconds,S1_highest_celsius");
    EXPECT_TRUE(rows[1].startsWith("0.00,"));
    EXPECT_NEAR(rows[rows.size() - 2].split(',').back().toDouble(), 37.0, 0.3);
    // What is no recording says so where troubles are told, and the window goes on.
    QFile broken(file("broken.irmrec"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("nonsense");
    broken.close();
    Q_EMIT dialogOf("openRecording")->fileSelected(file("broken.irmrec"));
    EXPECT_TRUE(m_window->windowTitle().startsWith(QStringLiteral("recording broken.irmrec")));
    ASSERT_TRUE(until([](const Snapshot& s) {
        return s.source == SourceKind::recording && !s.troubles.empty();
    }));
    EXPECT_FALSE(find<QWidget>("simulationDock").isVisible());
    find<QAction>("openSimulated").trigger();
    EXPECT_TRUE(until([](const Snapshot& s) {
        return s.source == SourceKind::simulated && s.settled && s.troubles.empty();
    }));
    EXPECT_FALSE(find<QWidget>("simulationDock").isHidden());
}

TEST_F(Files, OfASceneMayHaveTheSizeOfAnotherCamera) {
    open();
    const QByteArray pixels(2 * 160 * 120, 'x'); // 35.25 °C everywhere
    QFile small(file("small.pgm"));
    ASSERT_TRUE(small.open(QIODevice::WriteOnly));
    small.write("P5\n160 120\n65535\n" + pixels);
    small.close();
    QTest::keyClick(&find<QComboBox>("scene"), Qt::Key_End);
    Q_EMIT find<QWidget>("simulationDock")
        .findChild<QFileDialog*>()
        ->fileSelected(file("small.pgm"));
    EXPECT_TRUE(until([](const Snapshot& s) { return s.frame.width == 160 && s.settled; }));
    EXPECT_TRUE(reads(place(MouseMode::spot, {150, 110}, {150, 110}), 35.25));
    EXPECT_EQ(picture().placement().frame(), QSize(160, 120));
    EXPECT_TRUE(m_window->snapshot()->troubles.empty());
    // The built-in ones are again as large as the camera's own.
    QTest::keyClick(&find<QComboBox>("scene"), Qt::Key_Home);
    EXPECT_TRUE(until([](const Snapshot& s) { return s.frame.width == 384; }));
    EXPECT_TRUE(reads(place(MouseMode::spot, warm, warm), 37.0));
}

} // namespace
} // namespace irmcore::view::testing
