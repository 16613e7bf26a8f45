// What controls tell their window, by name.
#pragma once

#include <QLatin1String>
#include <QString>

#include <cstdint>

class CControlUI;

struct Notification
{
    QString type;
    CControlUI* sender = nullptr;
    std::intptr_t wParam =
        0;  // of a timer its number, of a click on a span the span's number, from 0
    std::intptr_t lParam = 0;
};

inline constexpr QLatin1String NotifyWindowInit("windowinit");
inline constexpr QLatin1String NotifyClick("click");
inline constexpr QLatin1String NotifySelectChanged("selectchanged");
inline constexpr QLatin1String NotifyCheckBoxSelectChanged("checkboxselectchanged");
inline constexpr QLatin1String NotifyItemSelect("itemselect");
inline constexpr QLatin1String NotifyItemExpand("itemexpand");
inline constexpr QLatin1String NotifyItemDoubleClick("itemdbclick");
inline constexpr QLatin1String NotifyItemClick("itemclick");
inline constexpr QLatin1String NotifyListCheckClick("list_check_click");
inline constexpr QLatin1String NotifyListItemDoubleClick("list_item_dbclick");
inline constexpr QLatin1String NotifyUpdatePage("updatepage");
inline constexpr QLatin1String NotifyHeaderClick("headerclick");
inline constexpr QLatin1String NotifyHot("onhot");
inline constexpr QLatin1String NotifyNotHot("offhot");
inline constexpr QLatin1String NotifyTimer("timer");
inline constexpr QLatin1String NotifyMenu("menu");

// A window: the widget that all controls below it tell what happens.
class INotificationTarget
{
public:
    INotificationTarget() = default;
    INotificationTarget(const INotificationTarget&) = delete;
    INotificationTarget& operator=(const INotificationTarget&) = delete;
    virtual ~INotificationTarget() = default;

    // The sender may be gone when it returns.
    virtual void OnNotification(const Notification& notification) = 0;
};
