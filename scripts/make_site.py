"""Makes pages of HTML from the manual, beside what scripts/docs has made already, and checks every link
of the site: make_site.py SITE."""

import html
import html.parser
import os
import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[1]
NAVIGATION = [
    ("Tarnkit", "README.md"), ("Getting started", "docs/getting-started.md"),
    ("Building an editor", "docs/building-an-editor.md"), ("The host", "docs/host.md"),
    ("Expressions", "docs/expressions.md"), ("Python", "docs/python.md"),
    ("Documents", "docs/formats/document.md"),
    ("Texts", "docs/formats/text.md"), ("Device graphs", "docs/formats/device-graph.md"),
    ("Image archives", "docs/formats/image-archive.md"), ("Git", "docs/git.md"),
    ("Checks", "docs/checks.md"), ("Plug-ins", "docs/plugins.md"),
    ("Versions", "docs/versions.md"), ("Changes", "CHANGELOG.md"),
    ("Architecture", "docs/architecture.md"), ("Performance", "docs/performance.md"),
    ("Contributing", "CONTRIBUTING.md"), ("Patches", "reference/index.html"),
    ("Classes", "api/index.html")]
# Folders and files of the tree that pages lead to.
COPIED = ["examples", "docs/images", "docs/document.schema.json", "packages.txt"]


def page_name(path):
    """README.md of the tree is index.html of the site."""
    return re.sub(r"\.md$", ".html", re.sub(r"^README\.md$", "index.md", path))


class Site:
    def __init__(self, folder):
        self.folder = folder
        self.classes = self.read_classes()

    def read_classes(self):
        """Class name to its page of the class reference."""
        tags = xml.etree.ElementTree.parse(self.folder / "api/tarnkit.tag").getroot()
        return {tag.findtext("name").removeprefix("tarnkit::"): "api/" + tag.findtext("filename")
                for tag in tags.findall("compound") if tag.get("kind") in ("class", "struct")}

    def write_pages(self):
        sources = [*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md")]
        for source in sources:
            if source.name != "api.md":
                self.write_page(source)
        (self.folder / "manual.css").write_text((ROOT / "docs/manual.css").read_text())
        for name in COPIED:
            target = self.folder / name
            target.parent.mkdir(parents=True, exist_ok=True)
            if (ROOT / name).is_dir():
                shutil.copytree(ROOT / name, target, dirs_exist_ok=True)
                for below in [target, *(p for p in target.rglob("*") if p.is_dir())]:
                    self.write_listing(below)
            else:
                shutil.copy(ROOT / name, target)

    def mend_classes(self):
        """The generator points to the nested classes of a class even where all of them are private."""
        for page in (self.folder / "api").glob("class*.html"):
            text = page.read_text(encoding="utf-8")
            if 'name="nested-classes"' not in text:
                mended = re.sub(r'<a href="#nested-classes">Classes</a> &#124;\n', "", text)
                if mended != text:
                    page.write_text(mended, encoding="utf-8")

    def write_listing(self, folder):
        entries = sorted(p.name + ("/index.html" if p.is_dir() else "")
                         for p in folder.iterdir() if p.name != "index.html")
        body = f"<h1>{html.escape(folder.name)}</h1>\n<ul>\n" + "".join(
            f'<li><a href="{entry}">{entry.removesuffix("/index.html")}</a></li>\n'
            for entry in entries) + "</ul>\n"
        self.write(folder / "index.html", folder.name, body, None)

    def write_page(self, source):
        path = source.relative_to(ROOT).as_posix()
        # An address in a table of values is a value, and no link.
        body = subprocess.run(
            ["pandoc", "-f", "gfm-autolink_bare_uris", "-t", "html5", str(source)], check=True,
            capture_output=True, text=True).stdout
        target = self.folder / page_name(path)
        up = os.path.relpath(self.folder, target.parent)

        def link(found):
            address, _, anchor = found[1].partition("#")
            if "://" in address:
                return found[0]
            if address.endswith(".md"):
                full = os.path.normpath(os.path.join(os.path.dirname(path), address))
                address = os.path.relpath(page_name(full), os.path.dirname(page_name(path)) or ".")
            elif address and (source.parent / address).is_dir():
                address = address.rstrip("/") + "/index.html"
            elif address and address.startswith("../tarnkit/") or address.startswith("tarnkit/"):
                name = pathlib.Path(address).stem
                address = f"{up}/{self.classes.get(name, 'api/index.html')}"
            return f'href="{address}{"#" + anchor if anchor else ""}"'

        def class_link(found):
            page = self.classes.get(found[1])
            return f'<a href="{up}/{page}">{found[0]}</a>' if page else found[0]

        body = re.sub(r'href="([^"]*)"', link, body)
        # Not within links and blocks of code.
        parts = re.split(r"(<a .*?</a>|<pre.*?</pre>|<h\d.*?</h\d>)", body, flags=re.DOTALL)
        parts[::2] = [re.sub(r"<code>(\w+)</code>", class_link, part) for part in parts[::2]]
        title = re.search(r"^# (.*)$", source.read_text(encoding="utf-8"), re.MULTILINE)[1]
        self.write(target, title.replace("`", ""), "".join(parts), path)

    def write(self, target, title, body, path):
        target.parent.mkdir(parents=True, exist_ok=True)
        up = os.path.relpath(self.folder, target.parent)
        links = "".join(
            f'<li><a href="{up}/{page_name(to)}"{" aria-current=page" if to == path else ""}>'
            f"{name}</a></li>\n" for name, to in NAVIGATION)
        target.write_text(
            "<!DOCTYPE html>\n<html lang=\"en-GB\">\n<head>\n<meta charset=\"utf-8\">\n"
            f"<title>{html.escape(title)}</title>\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            f"<link rel=\"stylesheet\" href=\"{up}/manual.css\">\n</head>\n<body>\n"
            f"<nav aria-label=\"The manual\">\n<ul>\n{links}</ul>\n</nav>\n<main>\n{body}</main>\n"
            "</body>\n</html>\n", encoding="utf-8")

    def dead_links(self):
        pages = {path: Links(path) for path in self.folder.rglob("*.html")}
        for path, page in pages.items():
            for address in page.links:
                target, _, anchor = address.partition("#")
                if re.match(r"\w+:", target):
                    continue
                to = (path.parent / target).resolve() if target else path.resolve()
                if not to.exists():
                    yield f"{path}: {address} leads nowhere"
                elif anchor and to.suffix == ".html":
                    if anchor not in pages[self.folder / to.relative_to(
                            self.folder.resolve())].names:
                        yield f"{path}: {address} leads to no heading"


class Links(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.names = [], set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("href", "src") and value:
                self.links.append(value)
            if name in ("id", "name"):
                self.names.add(value)


def main():
    site = Site(pathlib.Path(sys.argv[1]))
    site.write_pages()
    site.mend_classes()
    dead = list(site.dead_links())
    print("\n".join(dead), file=sys.stderr, end="\n" if dead else "")
    sys.exit(bool(dead))


if __name__ == "__main__":
    main()
