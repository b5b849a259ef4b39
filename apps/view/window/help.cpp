#include "mainwindow.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace irmcore::view {

namespace {

constexpr char keysText[] = R"(<table cellspacing="6">
<tr><td><b>V</b></td><td>select, move and resize what is on the picture</td></tr>
<tr><td><b>S</b>, <b>L</b>, <b>A</b></td><td>place a spot, a line, an area</td></tr>
<tr><td><b>Arrows</b></td><td>move the selected tool by a pixel; with <b>Shift</b> by ten</td></tr>
<tr><td><b>Del</b></td><td>remove the selected tool</td></tr>
<tr><td><b>Esc</b></td><td>give up what is being drawn or moved; then back to selecting</td></tr>
<tr><td><b>Ctrl+Z</b>, <b>Ctrl+Shift+Z</b></td><td>undo, redo</td></tr>
<tr><td><b>M</b></td><td>mark the hottest and the coldest pixel</td></tr>
<tr><td><b>Space</b></td><td>freeze the picture, or let it go on</td></tr>
<tr><td><b>F5</b></td><td>calibrate now</td></tr>
<tr><td><b>F11</b></td><td>full screen</td></tr>
<tr><td><b>Ctrl+C</b></td><td>copy the readings as text</td></tr>
<tr><td><b>Ctrl+S</b>, <b>Ctrl+T</b></td><td>save the picture, the temperatures</td></tr>
<tr><td><b>Ctrl+O</b></td><td>open a recording</td></tr>
<tr><td><b>Ctrl+Q</b></td><td>quit</td></tr>
</table>)";

constexpr char aboutText[] = R"(<h3>irmcore-view %1</h3>
<p>Shows what a thermal camera sees, live, and measures in it: spots, lines and areas,
over time, with the parameters of what is measured.</p>
<p>The camera is a simulated one, the machine's own, or a recorded session.</p>)";

void showText(QWidget* parent, const char* name, const QString& title, const QString& text) {
    auto* dialog = parent->findChild<QDialog*>(QString::fromLatin1(name));
    if (dialog == nullptr) {
        dialog = new QDialog(parent);
        dialog->setObjectName(QString::fromLatin1(name));
        dialog->setWindowTitle(title);
        auto* const label = new QLabel(text);
        label->setTextFormat(Qt::RichText);
        label->setWordWrap(true);
        label->setMinimumWidth(420);
        auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
        QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::close);
        auto* const layout = new QVBoxLayout(dialog);
        layout->addWidget(label);
        layout->addWidget(buttons);
    }
    dialog->show();
    dialog->raise();
}

} // namespace

void MainWindow::showKeys() {
    showText(this, "keysWindow", QStringLiteral("Keys"), QString::fromLatin1(keysText));
}

void MainWindow::showAbout() {
    showText(this, "aboutWindow", QStringLiteral("About irmcore-view"),
             QString::fromLatin1(aboutText).arg(QStringLiteral(IRMCORE_VERSION)));
}

} // namespace irmcore::view
