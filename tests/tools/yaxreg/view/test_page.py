"""The page of "yaxreg view" in a real browser: at two widths, light and dark, with ten keys and ten thousand.

From the environment: CHROMIUM and YAXREG, the programs; PICTURES, a folder for pictures of the page, if wanted.
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

CHROMIUM = os.environ["CHROMIUM"]
YAXREG = os.environ["YAXREG"]
PICTURES = os.environ.get("PICTURES")
LOOKS = [(width, scheme) for width in (360, 1280) for scheme in ("light", "dark")]
LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789"

FEW = [
    {"path": "network", "default": 7, "values": [{"name": "mode", "text": "static"}]},
    {"path": "network/eth0", "watch": 35, "rights": "rwcd:r", "values": [
        {"name": "label", "text": "uplink"}, {"name": "mac", "hex": "001bff00aa11"},
        {"name": "mtu", "number": 1500}, {"name": "offset", "number": "18446744073709551615"}]},
    {"path": "network/wlan0", "values": [
        {"name": "</script><script>", "text": "</script><script>document.title = 'broken'</script>"},
        {"name": "<img src=x onerror=x()>", "text": "a\u202eb\u2028c\td\ne"}]},
    {"path": "YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}", "values": [
        {"name": "BinaryPath", "text": "/usr/lib/libclock.so"}, {"name": "CompName", "text": "clock"},
        {"name": "FactoryFn", "number": 0}, {"name": "Type", "number": 1}]},
    {"path": "shop/till", "values": [{"name": "blob", "hex": bytes(range(256)).hex()}]},
    {"path": "users/anna"}]

# In the page: what of a key or value is shown, the chosen line, and how long frames take while the tree is scrolled.
CHOSEN = """(() => {
  const tree = document.getElementById('tree');
  const row = document.getElementById(tree.getAttribute('aria-activedescendant'));
  return row.querySelector('.name').textContent;
})()"""
ROWS = "document.querySelectorAll('#tree [role=treeitem]').length"
SCROLL = """new Promise((done) => {
  const tree = document.getElementById('tree');
  let last = 0, longest = 0, frames = 0;
  const step = (now) => {
    if (frames > 1) longest = Math.max(longest, now - last);
    last = now;
    tree.scrollTop += 500;
    if (++frames < 120) requestAnimationFrame(step);
    else done(longest);
  };
  requestAnimationFrame(step);
})"""
PAINTED = """new Promise((done) => {
  new PerformanceObserver((list) => done(list.getEntriesByName('first-contentful-paint')[0].startTime))
    .observe({ type: 'paint', buffered: true });
})"""


def many_keys():
    """A hundred keys with ninety-nine below each; names that take few records."""
    keys = [{"path": f"area{area:02}"} for area in range(100)]
    for area in range(100):
        for unit in range(99):
            name = LETTERS[unit] if unit < 36 else LETTERS[(unit - 36) // 10] + LETTERS[(unit - 36) % 10]
            keys.append({"path": f"area{area:02}/{name}", "values": [{"name": "count", "number": 100 * area + unit}]})
    return keys


class Files:
    """Registries and their pages, in a folder that goes away."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def yaxreg(self, *words, code=0, **more):
        done = subprocess.run([YAXREG, *words], stdout=subprocess.PIPE, text=True, check=False, **more)
        assert done.returncode == code, (words, done.returncode)
        return done.stdout

    def registry(self, name, keys):
        document = json.dumps({"keys": [{"path": ""}, *keys]})
        self.yaxreg("import", self.path(name), input=document)
        return self.path(name)

    def page(self, name, *registries, code=0):
        stderr = subprocess.DEVNULL if code else None
        self.yaxreg("view", *registries, "-o", self.path(name), code=code, stderr=stderr)
        return self.path(name)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.files = Files()
        cls.few = cls.files.registry("few.rce", FEW)
        cls.browser = Browser(CHROMIUM)

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.files.folder.cleanup()

    def open(self, page, width=1280, scheme="light"):
        self.browser.problems.clear()
        self.browser.requests.clear()
        self.browser.show(page, width, 900, scheme)
        if PICTURES:
            name = os.path.basename(page).replace(".html", f"-{width}-{scheme}.png")
            self.browser.picture(os.path.join(PICTURES, name))

    def run_script(self, script):
        return self.browser.run(script)

    def choose(self, query):
        """Searches and goes to the first hit."""
        self.run_script("document.activeElement.blur()")
        self.browser.press("/")
        self.run_script("document.getElementById('search').select()")
        self.browser.press(*query, "Enter")
        return self.run_script(CHOSEN)

    def expect_quiet(self):
        """No problem, nothing loaded but the page, no wider than the window."""
        self.run_script("new Promise((done) => setTimeout(done, 50))")
        self.assertEqual([], self.browser.problems)
        self.assertEqual(1, len(self.browser.requests), self.browser.requests)
        self.assertTrue(self.run_script("document.documentElement.scrollWidth <= innerWidth"))

    def details(self):
        return self.run_script("document.getElementById('details').innerText")

    def test_few_keys_in_every_look(self):
        page = self.files.page("few.html", self.few)
        for width, scheme in LOOKS:
            with self.subTest(width=width, scheme=scheme):
                self.open(page, width, scheme)
                self.assertEqual("few.rce", self.run_script("document.title"))
                self.assertGreater(self.run_script(ROWS), 20)
                self.assertEqual("mtu", self.choose("eth0:mt"))
                self.assertIn("1500", self.details())
                self.assertIn("0x5DC", self.details())
                self.assertEqual("1 hit", self.run_script("document.getElementById('status').textContent"))
                self.expect_quiet()
                self.expect_contrast()

    def test_many_keys_in_every_look(self):
        page = self.files.page("many.html", self.files.registry("many.rce", many_keys()))
        for width, scheme in LOOKS:
            with self.subTest(width=width, scheme=scheme):
                self.open(page, width, scheme)
                painted = self.run_script(PAINTED)
                self.run_script("document.getElementById('expand').click()")
                longest = self.run_script(SCROLL)
                print(f"10,001 keys, {width} px, {scheme}: {os.path.getsize(page):,} bytes, first render after "
                      f"{painted:.0f} ms, longest frame while scrolling {longest:.0f} ms", file=sys.stderr)
                self.assertLess(self.run_script(ROWS), 120)
                self.assertEqual("count", self.choose("9898"))
                self.assertIn("area98", self.details())
                self.expect_quiet()

    def test_keyboard_moves_through_the_tree(self):
        self.open(self.files.page("keys.html", self.few))
        self.run_script("document.getElementById('tree').focus()")
        press = self.browser.press
        expected = [("Home", "/"), ("ArrowDown", "YAX_ROOT"), ("ArrowLeft", "YAX_ROOT"), ("ArrowDown", "network"),
                    ("ArrowRight", "mode"), ("ArrowLeft", "network"), ("End", "anna"), ("ArrowUp", "users"),
                    ("s", "shop"), ("PageUp", "/")]
        for key, name in expected:
            press(key)
            self.assertEqual(name, self.run_script(CHOSEN), key)
        row = "document.getElementById(document.getElementById('tree').getAttribute('aria-activedescendant'))"
        press("ArrowDown")
        self.assertEqual("false", self.run_script(row + ".getAttribute('aria-expanded')"))
        press("ArrowRight")
        for name, value in (("expanded", "true"), ("level", "2"), ("setsize", "4"), ("posinset", "1"),
                            ("selected", "true")):
            self.assertEqual(value, self.run_script(row + f".getAttribute('aria-{name}')"), name)
        press("Enter")
        self.assertEqual("H3", self.run_script("document.activeElement.tagName"))
        press("Escape")
        self.assertEqual("tree", self.run_script("document.activeElement.id"))
        press("/")
        self.assertEqual("search", self.run_script("document.activeElement.id"))
        self.expect_quiet()

    def test_hostile_names_and_values_stay_texts(self):
        self.open(self.files.page("hostile.html", self.few))
        self.assertEqual("<img src=x onerror=x()>", self.choose("<img src"))
        self.assertIn("a\\u202eb\\u2028c\\x09d", self.details())
        self.assertEqual("</script><script>", self.choose("</script><script>d"))
        self.assertEqual(0, self.run_script("document.images.length"))
        self.assertEqual("few.rce", self.run_script("document.title"))
        # Even a script that got in would not run.
        self.run_script("document.body.append(Object.assign(document.createElement('script'), "
                        "{textContent: 'document.title = \"broken\"'}))")
        self.assertEqual("few.rce", self.run_script("document.title"))

    def test_two_files_show_what_differs(self):
        changed = [key for key in FEW if key["path"] != "users/anna"] + [{"path": "spare"}]
        second = self.files.registry("second.rce", changed)
        self.files.yaxreg("set", second, "network/eth0:mtu", "--int", "9000")
        self.files.yaxreg("watch", second, "network", "1")
        self.open(self.files.page("both.html", self.few, second))
        shown = self.run_script("""(() => {
          const filter = document.getElementById('filter');
          filter.value = 'change';
          filter.dispatchEvent(new Event('change'));
          return Array.from(document.querySelectorAll('.row'), (row) => row.innerText.replace(/\\s+/g, ' ').trim())
            .sort();
        })()""")
        for part in ("mtu 1500 9000 changed", "spare added", "users removed", "anna removed"):
            self.assertIn(part, [" ".join(line.split()) for line in shown])
        self.assertEqual("mtu", self.choose("mtu"))
        self.assertIn("In few.rce", self.details())
        self.assertIn("9000", self.details())
        self.expect_quiet()

    def test_damage_leads_to_the_keys_that_it_touches(self):
        damaged = self.files.path("damaged.rce")
        with open(self.few, "rb") as file:
            data = file.read()
        with open(damaged, "wb") as file:
            file.write(data[:52500])
        self.open(self.files.page("damaged.html", damaged, code=3))
        self.assertIn("Damaged", self.run_script("document.getElementById('states').innerText"))
        self.assertGreater(self.run_script("document.querySelectorAll('.findings .link').length"), 0)
        self.run_script("document.querySelector('.findings .link').click()")
        self.assertIn("loss", self.details())
        self.assertEqual("tree", self.run_script("document.activeElement.id"))
        self.expect_quiet()

    def test_deep_keys_open_and_close(self):
        depth = 2000
        path, keys = "", []
        for _ in range(depth):
            path += "/k" if path else "k"
        keys.append({"path": path, "values": [{"name": "deep", "number": 1}]})
        self.open(self.files.page("deep.html", self.files.registry("deep.rce", keys)), 360)
        self.assertEqual("deep", self.choose("deep"))
        self.browser.press("ArrowLeft")
        self.assertIn(f"level {depth:,}", self.details())
        self.run_script("document.getElementById('collapse').click()")
        self.assertLess(self.run_script(ROWS), 5)
        self.expect_quiet()

    def expect_contrast(self):
        """Texts of the page differ from what is behind them by 4.5 to 1."""
        poor = self.run_script(CONTRAST)
        self.assertEqual([], poor)


CONTRAST = """(() => {
  const numbers = (colour) => (colour.match(/[\\d.]+/g) || []).map(Number);
  const light = (colour) => {
    const part = (value) => value <= 10.31475 ? value / 3294.6 : ((value / 255 + 0.055) / 1.055) ** 2.4;
    const [r, g, b] = numbers(colour).map(part);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const behind = (element) => {
    for (let one = element; one; one = one.parentElement) {
      const colour = getComputedStyle(one).backgroundColor;
      const alpha = numbers(colour)[3];
      if (colour !== 'transparent' && alpha !== 0) return colour;
    }
    return 'rgb(255, 255, 255)';
  };
  const poor = new Set();
  for (const element of document.body.querySelectorAll('*:not(script):not(noscript)')) {
    const hasText = Array.from(element.childNodes).some((node) => node.nodeType === 3 && node.data.trim());
    const box = element.getBoundingClientRect();
    if (!hasText || box.width === 0) continue;
    const style = getComputedStyle(element);
    const text = light(element.closest('svg') ? style.fill : style.color);
    const back = light(behind(element));
    const ratio = (Math.max(text, back) + 0.05) / (Math.min(text, back) + 0.05);
    if (ratio < 4.5) poor.add(element.tagName + '.' + element.getAttribute('class') + ' ' + ratio.toFixed(2));
  }
  return Array.from(poor);
})()"""


if __name__ == "__main__":
    unittest.main()
