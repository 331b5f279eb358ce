// SPDX-License-Identifier: MIT
// What a view without an image says: what to do next, or why frames are not shown.
#pragma once

class QAction;
class QLabel;

namespace Ui {
class WindowQt;
} // namespace Ui

namespace Vistrel {

class Surface;
class SurfaceStream;
struct SourceAnswers;

class Hint
{
public:
    /// All outlive this object; the label is the surface's.
    Hint(const Ui::WindowQt& form, const SurfaceStream& stream, Surface* surface);

    bool isShown() const;
    void setShown(bool isShown);
    /// By the actions that can be triggered now, and what the source answered last.
    void update(const SourceAnswers& known);

private:
    const Ui::WindowQt& m_form;
    const SurfaceStream& m_stream;
    QLabel* const m_label;
};

} // namespace Vistrel
