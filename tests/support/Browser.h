#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

namespace kelp::test {

/// A real browser without a window, worked over the WebDriver protocol (https://www.w3.org/TR/webdriver2/). It ends
/// with this object.
class Browser
{
public:
    Browser() = default;
    ~Browser();
    Browser(const Browser &) = delete;
    Browser &operator=(const Browser &) = delete;

    [[nodiscard]] bool start();
    [[nodiscard]] const QString &problem() const { return m_problem; }

    /// Goes there and waits until the page is loaded.
    [[nodiscard]] bool open(const QUrl &url);
    /// Clicks on the element with this identifier, where it can be seen, and waits for the page that may follow.
    [[nodiscard]] bool click(const QString &id);
    /// The same with the first element that a CSS selector finds.
    [[nodiscard]] bool clickFirst(const QString &selector);
    /// A key, as what has the focus gets it.
    enum class Key : char16_t { Tab = u'\ue004', Return = u'\ue006', Down = u'\ue015' };
    [[nodiscard]] bool press(Key key);
    /// The identifier or, where there is none, the value of what has the focus.
    [[nodiscard]] QString focused();
    [[nodiscard]] QString title();
    /// All that can be read on the page.
    [[nodiscard]] QString text();
    [[nodiscard]] QString address();

private:
    [[nodiscard]] bool startDriver();
    [[nodiscard]] QString find(const QString &selector);
    /// A command of the session; its "value". `problem` says what is wrong where the driver reports an error.
    QJsonValue command(const QByteArray &method, const QString &path, const QJsonObject &parameters = {});

    QTemporaryDir m_profile;
    QProcess m_driver;
    QUrl m_session; ///< of the driver, then of the session
    QString m_problem;
};

} // namespace kelp::test
