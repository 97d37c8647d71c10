"""The tour as one page: texts, what programs printed, and pictures, all in one file."""

import base64
import html
from pathlib import Path

STYLE = """
:root { color-scheme: light dark; --text: #1d2733; --quiet: #5c6b7a; --ground: #f2f4f7; --card: #fff; --line: #dde3e9; --mark: #155a8a; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e3e8ee; --quiet: #9aa7b4; --ground: #14181d; --card: #1d232a; --line: #313a44; --mark: #7cc0ee; } }
body { font: 16px/1.5 "Segoe UI", "DejaVu Sans", sans-serif; color: var(--text); background: var(--ground); margin: 0; }
main { max-width: 60rem; margin: 0 auto; padding: 2rem 1rem; }
section { background: var(--card); border: 1px solid var(--line); border-radius: 10px; padding: 1rem 1.4rem; margin: 1.2rem 0; }
h1 { margin: 0; } h2 { margin: 0 0 .4rem; font-size: 1.15rem; color: var(--mark); }
p { margin: .4rem 0; } .quiet { color: var(--quiet); }
pre { background: var(--ground); border-radius: 6px; padding: .7rem .9rem; overflow-x: auto; font-size: .85rem; line-height: 1.35; }
figure { margin: .8rem 0; } figcaption { color: var(--quiet); font-size: .9rem; }
img { max-width: 100%; border-radius: 4px; } iframe { width: 100%; height: 44rem; border: 1px solid var(--line); border-radius: 6px; }
.pictures { display: flex; flex-wrap: wrap; gap: 1rem; align-items: flex-start; } .pictures figure { flex: 0 1 auto; min-width: 0; }
@media (min-width: 60rem) { .pictures { flex-wrap: nowrap; } }
@media (max-width: 40rem) { main { padding: 1rem .5rem; } section { padding: .8rem; } pre { white-space: pre-wrap; overflow-wrap: anywhere; } }
"""

# A page inside the page is shown whole.
FIT = "this.style.height = this.contentDocument.documentElement.scrollHeight + 4 + 'px'"


class Page:
    def __init__(self, title: str, introduction: str):
        self.title, self.introduction = title, introduction
        self.sections: list[list[str]] = []
        self.outputs: list[str] = []

    def section(self, title: str, text: str) -> None:
        self.sections.append([f"<h2>{html.escape(title)}</h2>\n<p>{html.escape(text)}</p>"])

    def output(self, text: str) -> None:
        self.outputs.append(text)
        self.sections[-1].append(f"<pre>{html.escape(text.rstrip())}</pre>")

    def pictures(self, files: list[tuple[Path, str]]) -> None:
        figures = "".join(
            f'<figure><img alt="{html.escape(caption)}" src="data:image/png;base64,'
            f'{base64.b64encode(path.read_bytes()).decode()}"><figcaption>{html.escape(caption)}</figcaption></figure>'
            for path, caption in files)
        self.sections[-1].append(f'<div class="pictures">{figures}</div>')

    def frame(self, document: str, title: str) -> None:
        self.sections[-1].append(f'<iframe title="{html.escape(title)}" srcdoc="{html.escape(document)}" onload="{FIT}"></iframe>')

    def write(self, path: Path) -> None:
        sections = "\n".join("<section>\n" + "\n".join(parts) + "\n</section>" for parts in self.sections)
        path.write_text(
            f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n<meta name="viewport" content="width=device-width">\n'
            f"<title>{html.escape(self.title)}</title>\n<style>{STYLE}</style>\n</head>\n<body>\n<main>\n"
            f'<h1>{html.escape(self.title)}</h1>\n<p class="quiet">{html.escape(self.introduction)}</p>\n{sections}\n</main>\n</body>\n</html>\n',
            encoding="utf-8")
