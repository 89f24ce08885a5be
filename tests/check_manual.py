#!/usr/bin/env python3
"""Fails when the manual has a link, a place or a picture that is not there, a page nobody can reach, a large picture or
one that the guided tour does not make, or when it lacks a text that the program shows in a message or an error. Links and
pictures of the README and the other pages for developers must be there too."""

import html
import os
import re
import subprocess
import sys

os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
MANUAL = "docs/manual"
LARGEST_PICTURE = 60_000
# What shows a text, or stops with one. "damaged", "refuse" and "fail" are the engine's own short forms.
SHOWING = r"\b(notice|question|CorruptFile|FileError|SqlError|RunTimeError|AppError|fail|damaged|refuse)\("
# Tools for the administrator, who reads their man pages; the tour; what only an end of the program can bring up.
LEFT_OUT = ("app/setup/", "app/tour/", "bench/", "data/jet/tools/", "samples/", "tests/")
SHORTEST = 5

complaints = []


def sources():
    names = subprocess.run(["git", "ls-files", "*.cpp", "*.h"], capture_output=True, text=True, check=True)
    return [name for name in names.stdout.split() if not name.startswith(LEFT_OUT)]


def plain(text):
    return re.sub(r"\s+", " ", text).strip()


def arguments(code, start):
    """The text between the parenthesis that ends at `start` and its partner; brackets in literals do not count."""
    depth, at = 1, start
    while depth and at < len(code):
        if code[at] == '"':
            at = re.compile(r'"(?:[^"\\]|\\.)*"').match(code, at).end()
            continue
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        at += 1
    return code[start:at]


def messages(name):
    with open(name, encoding="utf-8") as file:
        code = re.sub(r"(?m)(^|\s)//.*$", "", file.read())
    code = re.sub(r"'(?:[^'\\]|\\.)'", "0", code)
    for call in re.finditer(SHOWING, code):
        joined = re.sub(r'"\s*\n\s*"', "", arguments(code, call.end()))
        for literal in re.findall(r'"((?:[^"\\]|\\.)*)"', joined):
            text = plain(re.sub(r"\\[rn]", " ", literal).replace('\\"', '"').replace("\\\\", "\\"))
            for piece in re.split(r"%\d", text):
                piece = piece.strip('"').strip()
                if len(piece) >= SHORTEST:
                    yield piece


pages = {name for name in os.listdir(MANUAL) if name.endswith(".html")}
texts = {}
places = set(pages)
for page in pages:
    with open(f"{MANUAL}/{page}", encoding="utf-8") as file:
        texts[page] = file.read()
    places |= {f"{page}#{place}" for place in re.findall(r'\bid="([^"]+)"', texts[page])}

reached, pictures = {"index.html"}, set()
for page, text in texts.items():
    for link in re.findall(r'\bhref="([^"]+)"', text):
        target = page + link if link.startswith("#") else link
        reached.add(target.split("#")[0])
        if target not in places and not os.path.exists(f"{MANUAL}/{target}"):
            complaints.append(f"{page}: the link to {link} leads nowhere")
    for source in re.findall(r'<img\b[^>]*\bsrc="([^"]+)"', text):
        pictures.add(source)
        if not os.path.exists(f"{MANUAL}/{source}"):
            complaints.append(f"{page}: the picture {source} is missing; run {MANUAL}/pictures.sh")
    for image in re.findall(r"<img\b[^>]*>", text):
        if not re.search(r'\balt="[^"]+"', image):
            complaints.append(f"{page}: a picture does not say what it shows: {image}")
complaints += [f"{page} cannot be reached from index.html" for page in sorted(pages - reached)]

# What the pages for developers show and lead to.
written = subprocess.run(["git", "ls-files", "*.md"], capture_output=True, text=True, check=True).stdout.split()
for page in written:
    with open(page, encoding="utf-8") as file:
        targets = re.findall(r"\]\(([^)#\s]+)", file.read())
    for target in targets:
        if "://" not in target and not os.path.exists(os.path.join(os.path.dirname(page), target)):
            complaints.append(f"{page}: {target} is not there")
if len(written) < 10:
    complaints.append(f"only {len(written)} pages for developers were found")

tour = ""
for name in os.listdir("app/tour"):
    with open(f"app/tour/{name}", encoding="utf-8") as file:
        tour += file.read()
for name in sorted(os.listdir(f"{MANUAL}/images")):
    if f"images/{name}" not in pictures:
        complaints.append(f"images/{name} is shown nowhere")
    if f'"{name.removesuffix(".png")}"' not in tour:
        complaints.append(f"images/{name} is not a picture of the tour")
    if os.path.getsize(f"{MANUAL}/images/{name}") > LARGEST_PICTURE:
        complaints.append(f"images/{name} is larger than {LARGEST_PICTURE} bytes")

manual = plain(" ".join(html.unescape(re.sub(r"<[^>]+>", " ", text)) for text in texts.values()))
found = 0
for name in sources():
    for message in messages(name):
        found += 1
        if message not in manual:
            complaints.append(f'{name}: the manual does not have the message "{message}"')
if found < 150:
    complaints.append(f"only {found} message texts were found in the sources")

print("\n".join(complaints) or f"The manual holds together and has all {found} message texts.")
sys.exit(1 if complaints else 0)
