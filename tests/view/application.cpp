#include "application.h"

#include "apps/commands.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <memory>

namespace irmcore::view::testing {

namespace {

Complaints* kept = nullptr;

class Application : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QApplication>(m_argc, m_argv);
        QCoreApplication::setOrganizationName(QStringLiteral("irmcore"));
        QCoreApplication::setApplicationName(QStringLiteral("irmcore-view-test"));
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_place.path());
    }
    void TearDown() override { m_application.reset(); }

private:
    QTemporaryDir m_place;
    int m_argc = 1;
    char m_name[5] = "view";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
};

// Google Test destroys it.
[[maybe_unused]] const auto* const application =
    ::testing::AddGlobalTestEnvironment(new Application);

} // namespace

Complaints::Complaints() { kept = this; }
Complaints::~Complaints() { kept = nullptr; }

int different(const QImage& a, const QImage& b, QPoint near, int within) {
    EXPECT_EQ(a.size(), b.size());
    const QRect around(near.x() - within, near.y() - within, 2 * within + 1, 2 * within + 1);
    const QRect seen = around & a.rect() & b.rect();
    int count = 0;
    for (int y = seen.top(); y <= seen.bottom(); ++y)
        for (int x = seen.left(); x <= seen.right(); ++x)
            count += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
    return count;
}

} // namespace irmcore::view::testing

void irmcore::app::complain(const QString& text) {
    if (view::testing::kept != nullptr)
        view::testing::kept->add(text);
    else
        ADD_FAILURE() << text.toStdString();
}
