#include "foldermenus/menufilter.h"

#include "foldermenus/folderentries.h"

void MenuFilter::type(const QString &text, int count, const ShownText &shown) {
    typed_ += text;
    narrow(count, shown);
}

bool MenuFilter::backspace(int count, const ShownText &shown) {
    if (typed_.isEmpty())
        return false;
    typed_.chop(typed_.size() > 1 && typed_.back().isLowSurrogate() ? 2 : 1);
    if (typed_.isEmpty()) {
        clear();
        return true;
    }
    while (!steps_.empty() && steps_.back().typed.size() > typed_.size())
        steps_.pop_back();
    if (steps_.empty() || steps_.back().typed != typed_)
        narrow(count, shown);
    return true;
}

void MenuFilter::clear() {
    typed_.clear();
    keys_.clear();
    steps_.clear();
}

void MenuFilter::refresh(int count, const ShownText &shown) {
    keys_.clear();
    steps_.clear();
    if (isActive())
        narrow(count, shown);
}

void MenuFilter::narrow(int count, const ShownText &shown) {
    if (keys_.size() != std::size_t(count)) {
        keys_.clear();
        keys_.reserve(std::size_t(count));
        for (int index = 0; index < count; ++index)
            keys_.push_back(FolderFilterKey(shown(index)));
    }
    const QString needle = FolderFilterKey(typed_);
    // What matched a shorter text is all that can match a longer one.
    const Step *before = nullptr;
    for (auto step = steps_.rbegin(); step != steps_.rend() && before == nullptr; ++step) {
        if (typed_.startsWith(step->typed))
            before = &*step;
    }
    Step step{typed_, {}};
    const auto consider = [&](int index) {
        const QString &key = keys_[std::size_t(index)];
        if (!key.isEmpty() && key.contains(needle))
            step.matches.push_back(index);
    };
    if (before != nullptr) {
        for (const int index : before->matches)
            consider(index);
    } else {
        for (int index = 0; index < count; ++index)
            consider(index);
    }
    steps_.push_back(std::move(step));
}
