// SPDX-License-Identifier: MIT
// What a view without an image says: what to do next, or why frames are not shown.
#include "window/controllers/Hint.h"

#include "ui_WindowQt.h"
#include "window/SourceAnswers.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtWidgets/QLabel>

#include <utility>

namespace Vistrel {

Hint::Hint(const Ui::WindowQt& form, const SurfaceStream& stream, Surface* surface)
    : m_form(form), m_stream(stream), m_label(new QLabel(surface))
{
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_label->setStyleSheet(QStringLiteral("color: #f0f0f0; font-size: 15pt"));
    (new QVBoxLayout(surface))->addWidget(m_label);
}

bool Hint::isShown() const
{
    return !m_label->isHidden();
}

void Hint::setShown(bool isShown)
{
    m_label->setVisible(isShown);
}

void Hint::update(const SourceAnswers& known)
{
    const auto tr = [](const char* text) { return QCoreApplication::translate("Vistrel::WindowQt", text); };
    const std::pair<const QAction*, QString> steps[] = {
        {m_form.actionSetup, tr("Set up")},
        {m_form.actionStart, tr("Start")},
        {m_form.actionStart_Single, tr("Take one image")},
        {m_form.actionTrigger, tr("Trigger")},
    };
    QString hint = m_stream.refusal();
    const bool isRefused = !hint.isEmpty();
    if (!isRefused)
        hint = known.isRunning ? tr("Waiting for the first image") : tr("No image");
    for (const auto& [action, text] : steps) {
        if (isRefused && known.isSetUp)
            break;
        if (action->isVisible() && action->isEnabled() && (!known.isRunning || action == m_form.actionTrigger)) {
            const QString key = action->shortcut().toString(QKeySequence::NativeText);
            hint = key.isEmpty() ? text : tr("%1: %2").arg(text, key);
            break;
        }
    }
    m_label->setText(hint);
}

} // namespace Vistrel
