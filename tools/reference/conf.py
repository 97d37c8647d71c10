"""Sphinx: the reference as web pages that work from disk, and as the source of the compiled help file."""

import json
import re
from pathlib import Path

from docutils import nodes

project = "VelkSupport"
author = "The VelkSupport authors"
version = release = "1.1.0.1"
copyright = ""

extensions = ["myst_parser", "sphinx_copybutton", "sphinxcontrib.htmlhelp"]
myst_enable_extensions = ["colon_fence"]
myst_heading_anchors = 4
highlight_language = "none"
nitpicky = True

html_theme = "furo"
html_title = "VelkSupport 1.1"
html_static_path = ["static"]
html_css_files = ["velk.css"]
html_js_files = ["excerpts.js"]  # made below
html_show_sourcelink = False
html_show_copyright = False
html_show_sphinx = False
html_copy_source = False
html_use_index = False
html_show_search_summary = False  # it is fetched page by page, which browsers refuse from disk; excerpts.js has texts instead
html_theme_options = {
    "light_css_variables": {"color-brand-primary": "#155a8a", "color-brand-content": "#155a8a"},
    "dark_css_variables": {"color-brand-primary": "#7cc0ee", "color-brand-content": "#7cc0ee"},
}
pygments_style = "xcode"  # every word of it stands out enough
pygments_dark_style = "github-dark"
htmlhelp_basename = "VelkSupport"
if tags.has("help"):  # noqa: F821 (given by Sphinx); the help viewer brings its own contents and search
    html_theme, html_theme_options, html_css_files, html_js_files = "nonav", {}, ["help.css"], []
    extensions.remove("sphinx_copybutton")


def bundle(app, failure):
    """Puts together what Debian leaves apart of the theme, so that the pages work from disk.

    Its script is in modules. In Debian 12 one style sheet is on the web server, and the sheet's compiler lost the rule for
    readers whose system is dark.
    """
    if failure:
        return
    (Path(app.outdir) / ".buildinfo").unlink()  # for building again only
    if app.builder.name != "html":
        return
    static = Path(app.outdir) / "_static"
    (static / "excerpts.js").write_text(f"const EXCERPTS = {json.dumps(excerpts(app), sort_keys=True)};{SHOW_EXCERPTS}")
    script, part = static / "scripts" / "furo.js", static / "scripts" / "gumshoe-patched.js"
    modules = part.read_text() + re.sub(r"^import .*\n", "", script.read_text())
    script.write_text("(function () {\n" + modules + "\n}).call(window);\n")
    style = static / "styles" / "furo.css"
    rules = style.read_text()
    for imported in re.findall(r"@import url\((/javascript/[^)]*)\);", rules):
        rules = rules.replace(f"@import url({imported});", Path("/usr/share" + imported).read_text())
    if "prefers-color-scheme: dark" not in rules:
        chosen = re.search(r"@media not print \{.*?\n?\}\s*\}", rules, re.S)[0]
        dark = chosen.replace("not print", "screen and (prefers-color-scheme: dark)").replace('"dark"', '"auto"')
        rules = rules.replace(chosen, chosen + "\n" + dark)
    style.write_text(rules)


SHOW_EXCERPTS = """
new MutationObserver(() => {
    for (const link of document.querySelectorAll("#search-results li > a:only-of-type")) {
        const [page, anchor] = link.getAttribute("href").split("?")[0].split("#");
        const texts = EXCERPTS[page] || {};
        const text = texts[anchor || ""] || texts[""];
        if (!text || link.parentNode.querySelector(".excerpt")) continue;
        const shown = document.createElement("p");
        shown.className = "excerpt";
        shown.textContent = text;
        link.after(shown);
    }
}).observe(document, {childList: true, subtree: true});
"""


def excerpts(app):
    """The first words of each page, and of each of its sections by anchor: what a search shows of what it found."""
    found = {}
    for name in app.env.found_docs:
        texts = found[name + ".html"] = {}
        for section in app.env.get_doctree(name).findall(nodes.section):
            words = next((part.astext() for part in section.findall(nodes.paragraph)), "")
            for identifier in ["", *section["ids"]]:
                texts.setdefault(identifier, " ".join(words.split())[:160])
    return found


def accessible(app, page, template, context, doctree):
    """What the theme leaves out: what scrolls can be reached by keys, and the headings of the contents have a level."""
    if app.builder.name != "html":
        return
    context["body"] = re.sub(r'<pre\b|<div(?= class="table-wrapper)', r'\g<0> tabindex="0"', context.get("body", ""))
    context["furo_navigation_tree"] = context["furo_navigation_tree"].replace('role="heading"', 'role="heading" aria-level="2"')


def without_modules(app, page, template, context, doctree):
    """Browsers load no module from disk."""
    for script in context.get("script_files", []):
        attributes = getattr(script, "attributes", {})
        if attributes.pop("type", None) == "module":
            attributes["defer"] = "defer"


def setup(app):
    app.connect("build-finished", bundle)
    app.connect("html-page-context", without_modules)
    app.connect("html-page-context", accessible, priority=900)  # after the theme's own
