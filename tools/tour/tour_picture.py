"""The README's picture: parts of what the tour showed, arranged on a page and taken by a browser."""

import html
import subprocess
import textwrap
from pathlib import Path

# Each part ends where something ends: nothing is cut through.
PAGE = """<!DOCTYPE html><meta charset="utf-8"><style>
body {{ margin: 0; background: #e8ebef; }}
body > * {{ position: absolute; box-sizing: border-box; overflow: hidden; margin: 0; border-radius: 4px; background: #fff;
  box-shadow: 0 2px 10px #0003; object-fit: cover; object-position: left top; }}
iframe {{ border: 0; width: 914px; height: 240px; left: 24px; top: 24px; transform: scale(.7); transform-origin: left top; }}
.gallery {{ left: 24px; top: 216px; width: 640px; height: 264px; }}
pre {{ left: 690px; top: 24px; width: 486px; height: 168px; padding: 10px 14px; background: #14181d; color: #e3e8ee;
  font: 11.5px/1.42 "DejaVu Sans Mono", monospace; }}
.menu {{ left: 690px; top: 216px; width: 236px; height: 264px; object-fit: none; }}
.checks {{ left: 940px; top: 216px; width: 236px; height: 264px; object-fit: none; }}
.form {{ left: 24px; top: 504px; width: 640px; height: auto; }}
.dialog {{ left: 690px; top: 504px; width: 486px; height: 288px; }}
</style>
<iframe srcdoc="{report}"></iframe><img class="gallery" src="gallery.png"><pre>{terminal}</pre>
<img class="menu" src="icon-menu.png"><img class="checks" src="icon-menu-view.png">
<img class="form" src="widest.png"><img class="dialog" src="font-dialog.png">
"""


def terminal_text(outputs: list[str]) -> str:
    """The sealed file, the broken seal and the checksum, as the tour printed them."""
    sealed, broken, checksum = (next(text for text in outputs if mark in text) for mark in ("WT.GROSS", "corrupt", "100 %"))
    return "\n".join([*sealed.splitlines()[:4], "", *textwrap.wrap(broken.strip(), 64), "", *checksum.splitlines()[:2]])


def take_picture(tour: Path, outputs: list[str], picture: Path) -> None:
    report = (tour / "system.html").read_text("utf-16")
    page = tour / "picture.html"
    page.write_text(PAGE.format(report=html.escape(report), terminal=html.escape(terminal_text(outputs))), encoding="utf-8")
    subprocess.run(["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--window-size=1200,820",
                    f"--screenshot={picture}", page.as_uri()], check=True, capture_output=True, timeout=60)
