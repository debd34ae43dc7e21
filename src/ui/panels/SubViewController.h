#pragma once

#include <QString>

#include <memory>

namespace waxline::ui {

class CustomView;
class PanelController;

// Loads one panel's form by name (":/waxline/forms/<name>.ui") and readies its view.
// A form that fails to load leaves the view empty. Main thread only.
class SubViewController {
public:
    SubViewController(const QString& nibName, PanelController* owner);
    ~SubViewController();

    // The loaded view, owned by this controller until taken; null when loading failed.
    CustomView* view() const { return view_.get(); }
    std::unique_ptr<CustomView> takeView() { return std::move(view_); }
    PanelController* owner() const { return _owner; }

private:
    std::unique_ptr<CustomView> view_;
    PanelController* _owner;
};

} // namespace waxline::ui
