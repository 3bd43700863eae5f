#include "ConsentPage.h"

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

namespace {

/// `content` is HTML, `title` is text.
QString page(const QString &title, const QString &content)
{
    return uR"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>)"_s +
           title.toHtmlEscaped() + uR"(</title>
<link rel="icon" href="data:,">
<style>
* { box-sizing: border-box; }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; padding: 24px; background: #eef1f6;
       color: #1d2330; font: 16px/1.5 "Inter", "Noto Sans", system-ui, sans-serif; }
main { width: 100%; max-width: 440px; padding: 36px; background: #fff; border-radius: 20px;
       box-shadow: 0 1px 2px #1d233014, 0 16px 48px #1d23301f; }
.mark { width: 44px; height: 44px; margin-bottom: 20px; display: grid; place-items: center; border-radius: 12px;
        background: #2f6b4f; color: #fff; font-weight: 700; font-size: 22px; }
h1 { margin: 0 0 8px; font-size: 24px; line-height: 1.25; letter-spacing: -.01em; }
p { margin: 0 0 20px; color: #545d70; }
fieldset { margin: 0 0 20px; padding: 0; border: 0; }
legend { padding: 0; margin-bottom: 8px; font-size: 13px; font-weight: 600; color: #545d70; }
label { display: flex; align-items: center; gap: 12px; padding: 12px 14px; margin-bottom: 8px; border: 1px solid #d9dee8;
        border-radius: 12px; cursor: pointer; overflow-wrap: anywhere; }
label:has(:checked) { border-color: #2f6b4f; background: #f1f8f4; }
input { accent-color: #2f6b4f; width: 18px; height: 18px; margin: 0; flex: none; }
ul { margin: 0 0 28px; padding: 14px 14px 14px 34px; border-radius: 12px; background: #f6f7fa; }
.buttons { display: flex; justify-content: flex-end; gap: 12px; }
button { padding: 11px 26px; border: 0; border-radius: 999px; font: inherit; font-weight: 600; cursor: pointer; }
button:focus-visible, label:focus-within { outline: 3px solid #8fc7ab; outline-offset: 2px; }
#allow { background: #2f6b4f; color: #fff; }
#cancel { background: #e7eaf0; color: #1d2330; }
code { font-size: 14px; }
footer { margin-top: 28px; font-size: 13px; color: #8a92a3; }
</style>
</head>
<body>
<main>
)"_s + content +
           uR"(
<footer>Kelp sandbox, a local stand-in. No real account is involved.</footer>
</main>
</body>
</html>
)"_s;
}

} // namespace

QString consentPage(const QStringList &emails, const QString &suggested, const QByteArray &rawQuery)
{
    const QString chosen = emails.contains(suggested) ? suggested : emails.value(0);
    QString accounts;
    for (const QString &email : emails) {
        accounts +=
            u"<label><input type=\"radio\" name=\"account\" required value=\"%1\"%2><span>%1</span></label>\n"_s.arg(
                email.toHtmlEscaped(), email == chosen ? u" checked"_s : QString());
    }
    return page(u"Sign in to Kelp"_s, uR"(<div class="mark" aria-hidden="true">K</div>
<h1>Kelp wants to read your calendar</h1>
<p>Choose the account that Kelp may remind you for.</p>
<form method="post" action="/o/oauth2/v2/consent">
<input type="hidden" name="request" value=")"_s +
                                          QString::fromUtf8(rawQuery).toHtmlEscaped() + uR"(">
<fieldset>
<legend>Account</legend>
)"_s + accounts + uR"(</fieldset>
<ul><li>See the calendars you have access to, and their events</li></ul>
<div class="buttons">
<button id="cancel" name="decision" value="cancel" formnovalidate>Cancel</button>
<button id="allow" name="decision" value="allow">Allow</button>
</div>
</form>)"_s);
}

QString authorizationErrorPage(const QString &error, const QString &description)
{
    return page(u"Error 400: "_s + error,
                u"<h1>Access blocked</h1>\n<p>%1</p>\n<p><code>Error 400: %2</code></p>"_s.arg(
                    description.toHtmlEscaped(), error.toHtmlEscaped()));
}

} // namespace kelp::sandbox
