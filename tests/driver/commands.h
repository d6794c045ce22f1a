#pragma once

#include <QJsonObject>

#include <functional>

namespace driver {

struct Outcome {
    QJsonObject reply;
    std::function<void()> then; ///< the input to make once the reply is sent; may be empty
};

/// Carries out one request. A reply has "error" when the request could not be carried out.
Outcome perform(const QJsonObject& request);

} // namespace driver
