// SPDX-License-Identifier: MIT
// Shows the whole image small, with a frame around the visible part.
#include "window/panels/Panels.h"

#include <Vistrel/MiniMap.h>
#include <Vistrel/SurfaceStream.h>

namespace Vistrel {

namespace {

const PanelRegistration registration(&Ui_WindowQt::actionQuick_View, [](const PanelContext& context) -> QWidget* {
    auto* const miniMap = new MiniMap;
    miniMap->setScrollArea(context.form.scrollArea);
    QObject::connect(context.stream, SIGNAL(imageUpdated()), miniMap, SLOT(updateView()), Qt::QueuedConnection);
    return miniMap;
});

} // namespace

} // namespace Vistrel
