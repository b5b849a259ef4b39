#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

/// What all tests of the window share: an application on a screen that nobody sees, whose settings
/// lie in a place of their own.
namespace irmcore::view::testing {

/// While one is there, what the program complains of is kept; else it fails the test.
class Complaints {
public:
    Complaints();
    ~Complaints();
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;

    const QStringList& all() const { return m_all; }
    void add(const QString& text) { m_all += text; }

private:
    QStringList m_all;
};

/// Pixels of `a` that are another in `b`, within so many pixels of a point. The images are alike
/// in size.
int different(const QImage& a, const QImage& b, QPoint near, int within);

} // namespace irmcore::view::testing
