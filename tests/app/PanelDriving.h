#pragma once

#include "ui/panels/CustomView.h"
#include "ui/widgets/SKShapedButton.h"

#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

// Driving a loaded panel as a person would: its button for an action, and typing into the field
// with a tag, key by key.
namespace waxline::test {

// Clicks the visible button of `view` bound to `action`; a test failure when there is none.
inline void pressButton(ui::CustomView* view, unsigned panel, const char* action) {
    ASSERT_TRUE(view) << "panel " << panel;
    for (auto* button : view->findChildren<ui::SKShapedButton*>())
        if (button->property("action").toString() == QLatin1String(action)) {
            ASSERT_TRUE(button->isVisible()) << action;
            button->click();
            return;
        }
    FAIL() << "panel " << panel << " has no button for " << action;
}

// Replaces the text of the field with `tag` by typing `text`.
inline void typeInto(ui::CustomView* view, int tag, const QString& text) {
    ASSERT_TRUE(view);
    auto field = qobject_cast<QLineEdit*>(view->viewWithTag(tag));
    ASSERT_TRUE(field) << tag;
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
}

} // namespace waxline::test
