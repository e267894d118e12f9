"""The report: one HTML page with the steps and what the display showed."""

import base64
import html

HEAD = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>The road of a push on a desktop</title>
<style>
body { margin: 0; font: 14px/1.45 system-ui, sans-serif; color: #1d2733; background: #f4f6f8; }
header { padding: 28px 32px 8px; max-width: 900px; }
h1 { margin: 0 0 8px; font-size: 26px; }
header p { margin: 0 0 10px; color: #46535f; }
.steps { display: grid; grid-template-columns: 48px 1fr 80px; gap: 0 10px; padding: 0 22px 60px; max-width: 1000px; }
.no, .when { padding-top: 12px; color: #8a97a3; font-variant-numeric: tabular-nums; }
.no { text-align: right; }
.card { margin: 5px 0; padding: 9px 12px; border-radius: 10px; border-left: 4px solid #2a7d4f; background: #fff;
  box-shadow: 0 1px 3px #0002; font-weight: 600; overflow-wrap: anywhere; }
.card.failed { border-left-color: #c0392b; }
.card p { margin: 3px 0 0; font-weight: 400; color: #46535f; }
img { display: block; width: 100%; max-width: 560px; margin-top: 6px; border: 1px solid #d5dbe1; border-radius: 10px; }
</style>
</head>
<body>
<header>
<h1>The road of a push on a desktop</h1>
<p>The Reader, an ordinary application, was installed; the session's bus, DAEMON, a distributor, the push service's
address and the collection server are real. Each step was waited for and checked; the pictures are what the display
showed. On the right the seconds since the beginning.</p>
</header>
<div class="steps">
"""


def page(daemon, steps):
    """`steps`: name, whether it went well, words, seconds, PNG bytes or None."""
    text = HEAD.replace("DAEMON", html.escape(daemon))
    for number, (name, ok, words, seconds, picture) in enumerate(steps, 1):
        text += f'<div class="no">{number}</div><div class="card{"" if ok else " failed"}">{html.escape(name)}'
        text += f"<p>{html.escape(words)}</p>"
        if picture:
            text += f'<img alt="{html.escape(name)}" src="data:image/png;base64,{base64.b64encode(picture).decode()}">'
        text += f'</div><div class="when">{seconds:.1f} s</div>\n'
    return text + "</div>\n</body>\n</html>\n"
