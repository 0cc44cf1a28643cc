#!/usr/bin/env python3
"""Takes the picture of a page with headless Chromium.

usage: shoot.py PICTURE.png WIDTH HEIGHT light|dark URL
"""

import sys

sys.dont_write_bytecode = True
from devtools import Browser

picture, width, height, theme, url = sys.argv[1:]
with Browser() as browser:
    tab = browser.new_page(width=int(width), height=int(height), dark=theme == "dark")
    tab.open(url)
    tab.run("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")
    tab.screenshot(picture)
