#pragma once

#include <QTranslator>

namespace toolkit::qt {

/// The few texts that Qt itself shows in this program, in the language of the program.
class GermanTexts : public QTranslator {
public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char* disambiguation,
                      int n) const override;
};

} // namespace toolkit::qt
