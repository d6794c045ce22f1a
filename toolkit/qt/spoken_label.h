#pragma once

namespace toolkit::qt {

/// From now on screen readers say of labels what their layout adds: a bare figure says nothing to who cannot
/// see what stands beside it. To be called before the first layout is set up.
///
///     spokenPrefix        the words in front of it, such as "Frei:"
///     spokenUnit          the name of the label behind it
///
/// Both are not to be translated: what is, a layout sets when a screen reader may know the label already.
void speakLabels();

} // namespace toolkit::qt
