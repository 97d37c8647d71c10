#!/usr/bin/python3
"""Opens every page of the reference in a browser, from disk: check.py SITE PICTURES NODE_MODULES

No link may lead nowhere, no member may be without a text, everyone has to be able to use the pages (WCAG 2.1, levels A and AA, as far
as axe-core can tell, where it could be fetched), and the browser's console has to stay empty. Pictures of a few pages, wide and
narrow, light and dark, are left for whoever changes how they look.
"""

import sys
from pathlib import Path
from urllib.parse import quote_plus, unquote, urldefrag, urlparse

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

READ_PAGE = """
const text = (element) => element.textContent.replace(/¶|#$/g, "").trim();
return {
    links: [...document.querySelectorAll("a[href], link[href], img[src], script[src]")].map((e) => e.href || e.src),
    anchors: [...document.querySelectorAll("[id]")].map((e) => e.id),
    broken: [...document.images].filter((i) => !i.complete || i.naturalWidth === 0).map((i) => i.src),
    errors: document.querySelectorAll(".err, .system-message").length,
    silent: [...document.querySelectorAll("section#members-in-detail section")]
        .filter((s) => ![...s.children].some((c) => c.tagName === "P" && c.querySelector("code") === null && text(c)))
        .filter((s) => ![...s.querySelectorAll("p")].slice(1).some(text)).map((s) => text(s.querySelector("h3"))),
    members: document.querySelectorAll("section#members-in-detail section").length,
    headings: document.querySelectorAll("h1").length,
    width: document.documentElement.scrollWidth - document.documentElement.clientWidth,
};
"""
BARRIERS = """
const done = arguments[arguments.length - 1];
axe.run({runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa"], resultTypes: ["violations"], preload: false}).then((found) =>
    done(found.violations.flatMap((v) => v.nodes.map((node) => v.help + ": " + node.html.slice(0, 100)))));
"""
SIZES = {"wide": (1400, 1000), "narrow": (420, 900)}
PICTURED = ["index.html", "classes.html", "classes/CLinkedList.html", "classes/CIniFile.html", "classes/CCRC32.html", "errors.html",
            "coming_from_scripting_objects.html", "languages.html", "samples/ini_file_vbs.html"]


def browser() -> webdriver.Chrome:
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars"):
        options.add_argument(argument)
    options.binary_location = "/usr/bin/chromium"
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def emulate(driver: webdriver.Chrome, size: str, scheme: str) -> None:
    width, height = SIZES[size]
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": size == "narrow"})
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})


def read(driver: webdriver.Chrome, page: Path) -> tuple[dict, list[str]]:
    driver.get(page.as_uri())
    shown = page.as_uri() + "complete"  # get() may end before, when the machine is busy
    WebDriverWait(driver, 60).until(lambda _: driver.execute_script("return location.href + document.readyState") == shown)
    found = driver.execute_script(READ_PAGE)
    return found, [entry["message"] for entry in driver.get_log("browser")]


def barriers(driver: webdriver.Chrome, axe: str) -> list[str]:
    driver.execute_script(axe)
    return driver.execute_async_script(BARRIERS)


def dead_links(page: Path, links: list[str], anchors: dict[Path, set[str]]) -> list[str]:
    dead = []
    for link in links:
        target, fragment = urldefrag(link)
        if urlparse(target).scheme != "file":
            continue
        path = Path(unquote(urlparse(target).path))
        known = anchors.get(path)
        if not path.is_file() or (fragment and known is not None and unquote(fragment) not in known):
            dead.append(link)
    return dead


# What people type, and the page that they have to be led to.
SEARCHES = {"GetCRCFromFile": "CCRC32.html#", "save a setting": "tasks.html#", "copy list": "tasks.html", "unicode": "tasks.html#"}


def search_problems(driver: webdriver.Chrome, site: Path) -> list[str]:
    problems = []
    driver.implicitly_wait(10)
    for words, page in SEARCHES.items():
        driver.get((site / "search.html").as_uri() + "?q=" + quote_plus(words))
        if not driver.find_elements(By.CSS_SELECTOR, f'#search-results li a[href*="{page}"]'):
            problems.append(f"search.html: \"{words}\" does not lead to {page}")
        elif not driver.find_elements(By.CSS_SELECTOR, "#search-results .excerpt"):
            problems.append(f"search.html: no excerpts for \"{words}\"")
    return problems + [f"search.html: console: {entry['message']}" for entry in driver.get_log("browser")]


def main() -> int:
    site, pictures, modules = (Path(argument).resolve() for argument in sys.argv[1:])
    axe = modules / "axe-core/axe.min.js"
    axe_text = axe.read_text() if axe.is_file() else ""
    if not axe_text:
        print("SKIPPED: whether everyone can use the pages; axe-core is not to be had here")
    pages = sorted(p for p in site.rglob("*.html") if "_static" not in p.parts)
    problems, links, anchors, members = [], {}, {}, 0
    with browser() as driver:
        emulate(driver, "narrow", "light")
        for page in pages:
            found, console = read(driver, page)
            name = page.relative_to(site)
            links[page], anchors[page] = found["links"], set(found["anchors"])
            members += found["members"]
            problems += [f"{name}: console: {message}" for message in console]
            problems += [f"{name}: picture {source} is not shown" for source in found["broken"]]
            problems += [f"{name}: {member} has no text" for member in found["silent"]]
            if found["errors"]:
                problems.append(f"{name}: {found['errors']} pieces of code or mark-up that were not understood")
            if axe_text:
                problems += [f"{name}: {barrier}" for barrier in barriers(driver, axe_text)]
            if found["headings"] != 1 and page.name != "search.html":
                problems.append(f"{name}: {found['headings']} main headings")
            if found["width"] > 0:
                problems.append(f"{name}: {found['width']} pixels wider than a narrow screen")
        for page in pages:
            problems += [f"{page.relative_to(site)}: dead link {link}" for link in dead_links(page, links[page], anchors)]
        problems += search_problems(driver, site)
        driver.execute_script("localStorage.clear()")  # else what was searched stays marked
        pictures.mkdir(parents=True, exist_ok=True)
        for size in SIZES:
            for scheme in ("light", "dark"):
                emulate(driver, size, scheme)
                for page in PICTURED:
                    driver.get((site / page).as_uri())
                    driver.save_screenshot(str(pictures / f"{page.replace('/', '-')[:-5]}-{size}-{scheme}.png"))
    print("\n".join(problems) or f"{len(pages)} pages with {members} members: no dead link, no member without text, a silent console"
          + (", no barrier." if axe_text else "."))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
