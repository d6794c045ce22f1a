// What a backend has made of a picture file.
#pragma once

#include "toolkit/color.h"
#include "toolkit/picture.h"

#include <memory>

namespace conformance {

/// Pictures can be loaded as long as it lives.
class PictureDrawing {
public:
    PictureDrawing();
    PictureDrawing(const PictureDrawing&) = delete;
    PictureDrawing& operator=(const PictureDrawing&) = delete;
    ~PictureDrawing();

private:
    struct State;
    std::unique_ptr<State> state_;
};

struct PictureSize {
    int width = 0;
    int height = 0;
};

PictureSize sizeOf(const base::Picture& picture);

toolkit::Color pixelOf(const base::Picture& picture, int x, int y);

/// What this process has used of the processors so far, which a busy machine does not change.
double processorSeconds();

} // namespace conformance
