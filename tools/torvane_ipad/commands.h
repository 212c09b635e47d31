#pragma once

#include "torvane_ipad/console.h"
#include "torvane_ipad/options.h"

namespace torvane::ipad {

// What the program can do; the table of commands says which is which.
[[nodiscard]] Exit findHelpers(const Options& options, const Console& console);
[[nodiscard]] Exit pairDevices(const Options& options, const Console& console);
[[nodiscard]] Exit showInfo(const Options& options, const Console& console);
[[nodiscard]] Exit getPath(const Options& options, const Console& console);
[[nodiscard]] Exit postFile(const Options& options, const Console& console);
[[nodiscard]] Exit showState(const Options& options, const Console& console);
[[nodiscard]] Exit watchState(const Options& options, const Console& console);
[[nodiscard]] Exit chooseDocument(const Options& options, const Console& console);
[[nodiscard]] Exit listSlides(const Options& options, const Console& console);
[[nodiscard]] Exit showNotes(const Options& options, const Console& console);
[[nodiscard]] Exit goToSlide(const Options& options, const Console& console);
[[nodiscard]] Exit goOn(const Options& options, const Console& console);
[[nodiscard]] Exit goBack(const Options& options, const Console& console);
[[nodiscard]] Exit startShow(const Options& options, const Console& console);
[[nodiscard]] Exit endShow(const Options& options, const Console& console);
[[nodiscard]] Exit blackOut(const Options& options, const Console& console);
[[nodiscard]] Exit savePicture(const Options& options, const Console& console);
[[nodiscard]] Exit exportSlides(const Options& options, const Console& console);
[[nodiscard]] Exit drawInk(const Options& options, const Console& console);
[[nodiscard]] Exit moveLaser(const Options& options, const Console& console);
[[nodiscard]] Exit undoStroke(const Options& options, const Console& console);
[[nodiscard]] Exit clearInk(const Options& options, const Console& console);
[[nodiscard]] Exit runLoad(const Options& options, const Console& console);
[[nodiscard]] Exit tryReplay(const Options& options, const Console& console);

}  // namespace torvane::ipad
