#include "toolkit/message_box.h"

#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/shown_text.h"

namespace toolkit {

int messageBox(std::string_view text, int style, std::string_view title) {
    throwIfEndIsDue();
    const int answer = backend::showMessage(shownMessage(text), style, title);
    throwIfEnding();
    return answer;
}

} // namespace toolkit
