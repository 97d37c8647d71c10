"""The README's picture: parts of what the tour showed, arranged on a page and taken by a browser."""

import html
import re
import subprocess
import textwrap
from pathlib import Path

PAGE = """<!DOCTYPE html><meta charset="utf-8"><style>
body {{ margin: 0; background: #e8ebef; }}
body > * {{ position: absolute; box-sizing: border-box; overflow: hidden; margin: 0; border-radius: 4px; background: #fff;
  box-shadow: 0 2px 10px #0003; object-fit: cover; object-position: left top; }}
iframe {{ border: 0; width: 914px; height: 471px; left: 24px; top: 24px; transform: scale(.7); transform-origin: left top; }}
.gallery {{ left: 24px; top: 378px; width: 640px; height: 418px; }}
.menu {{ left: 690px; top: 24px; width: 262px; height: 260px; object-fit: none; }}
pre {{ left: 972px; top: 24px; width: 204px; height: 260px; padding: 14px 12px; background: #14181d; color: #e3e8ee;
  font: 11.5px/1.45 "DejaVu Sans Mono", monospace; }}
.form {{ left: 690px; top: 308px; width: 486px; height: 176px; }}
.dialog {{ left: 690px; top: 508px; width: 486px; height: 288px; }}
</style>
<iframe srcdoc="{report}"></iframe><img class="gallery" src="gallery.png"><img class="menu" src="icon-menu.png"><pre>{terminal}</pre>
<img class="form" src="widest.png"><img class="dialog" src="font-dialog.png">
"""


def terminal_text(outputs: list[str]) -> str:
    """The sealed file, the broken seal and the checksum, as the tour printed them, in a narrow window."""
    sealed, broken, checksum = (next(text for text in outputs if mark in text) for mark in ("WT.GROSS", "corrupt", "100 %"))
    rows = [re.split(r"  +", line) for line in sealed.splitlines() if line.startswith("WT.")]
    lines = [text for name, _, meaning in rows[:2] for text in (name, f"  {meaning}")]
    lines += ["", *textwrap.wrap(broken.partition(": ")[2].strip(), 24), ""]
    lines += ["[##########] 100 %", *checksum.split("\n")[1:2]]
    return "\n".join(lines)


def take_picture(tour: Path, outputs: list[str], picture: Path) -> None:
    report = (tour / "system.html").read_text("utf-16")
    page = tour / "picture.html"
    page.write_text(PAGE.format(report=html.escape(report), terminal=html.escape(terminal_text(outputs))), encoding="utf-8")
    subprocess.run(["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--window-size=1200,820",
                    f"--screenshot={picture}", page.as_uri()], check=True, capture_output=True, timeout=60)
