#pragma once

#include <gtest/gtest.h>

#include <QComboBox>
#include <QString>

namespace irmcore::view::testing {

/// The object of that name; the test cannot go on without it.
template <typename Object>
Object& in(QObject& parent, const char* name) {
    auto* const object = parent.findChild<Object*>(QLatin1String(name));
    EXPECT_NE(object, nullptr) << name;
    return *object;
}

/// Chooses the entry of a list that has this data.
inline void choose(QObject& panel, const char* name, int data) {
    auto& box = in<QComboBox>(panel, name);
    ASSERT_GE(box.findData(data), 0) << name << " " << data;
    box.setCurrentIndex(box.findData(data));
}

} // namespace irmcore::view::testing
