// SPDX-License-Identifier: MIT
// Commands of the host in the window's menu, tool bar and image information bar.
#include <Vistrel/Action.h>
#include <Vistrel/Application.h>
#include <Vistrel/ImperativeAcquisitionInterface.h>
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/Window.h>

#include <array>

namespace {

/// One picture that does not change.
class Picture final : public Vistrel::ImperativeAcquisitionInterface
{
public:
    Picture()
    {
        for (std::size_t i = 0; i < m_pixels.size(); ++i)
            m_pixels[i] = static_cast<unsigned char>(i % 256);
        setFramesLocked(true);
        setNextFrame(m_pixels.data(), 256, 256, Vistrel::Mono8, nullptr);
    }
    bool isSetup() const override { return true; }
    bool isRunning() const override { return true; }

private:
    std::array<unsigned char, 256 * 256> m_pixels;
};

/// A checkable command: `checked` is its new state.
class Invert final : public Vistrel::AbstractActionInterface
{
    void triggered(bool checked) override
    {
        action()->window()->setColorTable(checked ? Vistrel::ColorTable::GrayInverse : Vistrel::ColorTable::Gray);
    }
};

class ShowCrosshair final : public Vistrel::AbstractActionInterface
{
    void triggered(bool checked) override { action()->window()->setPixelCrosshairVisible(checked); }
};

/// Asks the user first.
class Reset final : public Vistrel::AbstractActionInterface
{
public:
    explicit Reset(Vistrel::Action* invert) : m_invert(invert) {}

private:
    void triggered(bool) override
    {
        using Vistrel::DialogButton;
        const DialogButton answer =
            Vistrel::MessageBoxDialog::question(action()->window(), "Reset", "Show the picture as it was at first?",
                                                DialogButton::Yes | DialogButton::No, DialogButton::No);
        if (answer != DialogButton::Yes || !action()) // the user may have closed the window
            return;
        m_invert->setChecked(false);
        action()->window()->setColorTable(Vistrel::ColorTable::Gray);
        action()->window()->setZoomToFit(true);
    }

    Vistrel::Action* m_invert; // of the same window
};

/// Can be used once: deleting the action removes its entry, and the menu, which is then empty.
class Once final : public Vistrel::AbstractActionInterface
{
    void triggered(bool) override { delete action(); }
};

template <typename Command>
Vistrel::ScopedActionInterface command()
{
    return Vistrel::ScopedActionInterface(new Command);
}

} // namespace

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    Vistrel::Window window(Vistrel::ScopedAcquisitionInterface(new Picture));
    window.setTitle("Commands of my own");

    Vistrel::Action* const invert = window.addMainMenuAction(command<Invert>(), "&Picture", "&Invert");
    invert->setCheckable(true);
    invert->setToolTip("Shows dark as bright");
    window.addMainMenuAction(command<Once>(), "&Once", "&Go Away");
    window.addToolBarAction(Vistrel::ScopedActionInterface(new Reset(invert)), "Reset");
    window.addImageStatsAction(command<ShowCrosshair>(), "Crosshair")->setCheckable(true);

    window.show();
    return application.exec();
}
