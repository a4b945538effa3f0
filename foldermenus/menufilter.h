// Typing in a menu narrows it to the items whose shown name contains what was
// typed, case and accents folded. A keystroke searches only what the one
// before it left, and Backspace steps back, so no keystroke costs more than
// one pass over the menu.
#pragma once

#include <QString>

#include <functional>
#include <vector>

class MenuFilter {
public:
    // The shown name of item `index` (0 to count - 1); empty never matches.
    using ShownText = std::function<QString(int index)>;

    bool isActive() const { return !typed_.isEmpty(); }
    const QString &text() const { return typed_; }
    // The items that match, in menu order; only while active.
    const std::vector<int> &matches() const { return steps_.back().matches; }

    void type(const QString &text, int count, const ShownText &shown);
    // Takes back the last character typed; false when there was none.
    bool backspace(int count, const ShownText &shown);
    void clear();
    // The items changed: the same text is searched for in the new ones.
    void refresh(int count, const ShownText &shown);

private:
    struct Step {
        QString typed;
        std::vector<int> matches;
    };
    void narrow(int count, const ShownText &shown);

    QString typed_;
    std::vector<QString> keys_; // folded names, made at the first keystroke
    std::vector<Step> steps_;
};
