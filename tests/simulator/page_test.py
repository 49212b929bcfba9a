"""Tests the page of the simulated gateway in headless Chromium: page_test.py GATEWAY"""
import http.client
import os
import re
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

GATEWAY = sys.argv.pop(1)
PERMITTED = "+4917012345"
CHROMIUM = ("headless=new no-sandbox disable-gpu disable-quic no-first-run disable-background-networking "
            "disable-component-update disable-sync disable-dev-shm-usage window-size=1280,900").split()

# Returns the lowest contrast (as WCAG defines it) between the border of a control and the background around the control.
LEAST_CONTRAST = """
const light = (colour) => colour.match(/[\\d.]+/g).slice(0, 3).map((part) => part / 255)
  .map((part) => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
  .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);
const ground = (one) => getComputedStyle(one).backgroundColor === "rgba(0, 0, 0, 0)" && one.parentElement
  ? ground(one.parentElement) : getComputedStyle(one).backgroundColor;
return Math.min(...[...document.querySelectorAll("button, input, textarea, select")].map((one) => {
  const both = [getComputedStyle(one).borderTopColor, ground(one.parentElement)].map(light).sort((one, other) => one - other);
  return (both[1] + 0.05) / (both[0] + 0.05);
}));"""


def browser(folder):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in CHROMIUM + [f"user-data-dir={folder}"]:
        options.add_argument("--" + flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.gateway = subprocess.Popen([GATEWAY, "--page", "0"], stdin=subprocess.DEVNULL,
                                       stdout=subprocess.PIPE, text=True)
        cls.address = re.search(r"http://\S+/", cls.gateway.stdout.readline()).group()
        # The browser needs more space than the small /tmp of a private gateway.
        cls.profile = tempfile.TemporaryDirectory(dir=os.getcwd(), ignore_cleanup_errors=True)
        os.environ["TMPDIR"] = cls.profile.name
        cls.page = browser(cls.profile.name)

    @classmethod
    def tearDownClass(cls):
        cls.gateway.terminate()
        status = cls.gateway.wait(30)
        cls.gateway.stdout.close()
        ended = cls.page.find_element(By.ID, "daemon")
        WebDriverWait(cls.page, 10).until(lambda _: ended.text.endswith("the gateway has ended"))
        cls.page.quit()
        cls.profile.cleanup()
        assert status == 0, f"the gateway ended with status {status}"

    def setUp(self):
        self.page.get(self.address)
        self.see("#sender", PERMITTED)
        self.see("#faults", "Everything works.")

    def one(self, selector):
        return self.page.find_element(By.CSS_SELECTOR, selector)

    def count(self, selector):
        return len(self.page.find_elements(By.CSS_SELECTOR, selector))

    def see(self, selector, text):
        """Waits until an element that the selector matches shows the text."""
        def shown(page):
            return page.execute_script("return [...document.querySelectorAll(arguments[0])].some("
                                       "one => one.textContent.includes(arguments[1]))", selector, text)
        WebDriverWait(self.page, 20).until(shown, f'no {selector} shows "{text}"')

    def click(self, label, selector="body", text=""):
        """Clicks the button with this label, and waits as see() does."""
        self.page.find_element(By.XPATH, f'//button[normalize-space()="{label}"]').click()
        self.see(selector, text)

    def write(self, text):
        box = self.one("#text")
        box.clear()
        box.send_keys(text, Keys.ENTER)

    def run_pass(self):
        self.click("Run a pass", "#said", "1 pass, 5 seconds.")

    def test_the_example_reaches_the_api_and_is_answered(self):
        self.click("Send", "#conversation .written", "p secret #ping 8.8.8.8 3")
        self.run_pass()
        self.see("#requests code", "POST /api/command/do_ping_through_sms")
        self.see("#requests pre", '{"recipients": ["+4917012345"], "args": ["8.8.8.8","3"]}')
        self.see("#messages .card:has(.received) .tag", "command, passed on")
        self.see("#requests .outcome", "The gateway has carried out /api/command/do_ping_through_sms")
        self.run_pass()
        self.see("#conversation li:not(.written)", "do_ping_through_sms: done")

    def test_a_reboot_is_shown(self):
        process = self.one("#daemon").text
        self.click("reboot")
        self.click("Send")
        self.run_pass()
        self.see("#requests code", "POST /api/command/sms_restart")
        self.see("#requests .outcome", "The gateway has rebooted")
        WebDriverWait(self.page, 20).until(lambda _: "runs" in self.one("#daemon").text != process)
        self.run_pass()
        self.see("#conversation li:not(.written)", "The gateway has rebooted.")

    def test_a_command_that_the_api_refuses_is_not_carried_out(self):
        outcomes = self.count("#requests .outcome")
        self.click("API answers 500", "#faults", "api: code 500")
        self.write("p secret #wifi")
        self.run_pass()
        self.see("#requests .card", "POST /api/command/send_wifistatus_sms answered 500")
        self.see("#log .ERROR", "request failed with response code: 500")
        self.click("Repair everything", "#faults", "Everything works.")
        self.run_pass()
        self.assertEqual(self.count("#requests .outcome"), outcomes)

    def test_a_refused_message_is_retried_and_sent(self):
        self.click("Let the modem refuse this number", "#faults", "refused: +4917022222")
        self.click("Queue message", "#said", "Queued as")
        self.run_pass()
        self.see("#messages .card:has(.failed)", "3 retries left")
        self.click("Wait 30 s", "#messages .card:has(.failed)", "2 retries left")
        self.click("Repair everything", "#faults", "Everything works.")
        self.click("Wait 5 min", "#messages .card:has(.sent)", "Tank 3 is nearly empty")
        self.see("#log .ERROR", "Error to send SMS.")
        self.see("#sender", "+4917022222")

    def test_the_page_shows_why_a_command_is_refused(self):
        for text, why in (("p wrong #wan", "wrong password"), ("p secret #wam", "no such command")):
            self.write(text)
            self.run_pass()
            self.see("#messages .card:has(.received) .tag", "not executed: " + why)

    def test_a_hang_is_shown_and_ended(self):
        self.click("Tool hangs", "#faults", "unread: hang")
        self.click("Run a pass", "#daemon", 'the tool hangs in "unread" for ')
        self.see("#said.wrong", 'Pass 1 does not end: the tool hangs in "unread"; "repair" ends the hang.')
        self.click("Restart", "#said.wrong", "The daemon's pass does not end: the tool hangs in")
        self.click("Repair everything", "#daemon", "veld runs")
        self.run_pass()

    def test_the_console_answers_and_a_killed_daemon_starts_again(self):
        for command in ("recieve +49 hello", "kill"):
            self.one("#console-line").clear()
            self.one("#console-line").send_keys(command, Keys.ENTER)
        self.see("#log .wrong", "did you mean: receive NUMBER TEXT")
        self.see("#daemon", "veld ended with status signal 9")
        self.click("Start", "#daemon", "veld runs")

    def test_open_pages_do_not_keep_commands_waiting(self):
        pages = [http.client.HTTPConnection(self.address.split("/")[2]) for _ in range(40)]
        for page in pages:
            page.request("GET", "/events")
        self.run_pass()
        for page in pages:
            page.close()

    def test_markup_is_shown_as_text(self):
        markup = '<script>document.title = "1"</script><img src=x onerror="document.title = 2">'
        self.write(markup)
        self.run_pass()
        for place in "#conversation li", "#messages .text", "#log .INFO":
            self.see(place, markup)
        self.assertEqual(self.page.title, "veld on a simulated gateway")
        self.assertEqual(self.page.find_elements(By.CSS_SELECTOR, "img, main script"), [])

    def test_a_text_of_blanks_is_shown_as_the_number_of_blanks(self):
        self.write("   ")
        self.see("#conversation .written", "(3 blanks)")
        self.run_pass()
        self.see("#messages .card:has(.received)", "(3 blanks)")

    def test_a_person_can_send_from_another_number(self):
        for number in ("+4917055555", "+4917066666"):
            Select(self.one("#sender")).select_by_visible_text("another number …")
            self.one("#another-number").send_keys(number, Keys.ENTER)
            self.assertEqual(self.one("#sender").get_attribute("value"), number)
            self.write("from another")
            self.see("#conversation .written", "from another")

    def test_a_text_that_looks_like_an_option_stays_a_text(self):
        for text in ('quotes " and \\ and \\n', "one' --retries", "--16-bit"):
            with self.subTest(text):
                self.write(text)
                self.run_pass()
                self.see("#messages .card:has(.received) .text", text)

    def test_the_keyboard_reaches_each_control_and_shows_the_focus(self):
        wanted = self.page.execute_script(
            "return document.querySelectorAll(':is(button, input, textarea, select):not([hidden], [hidden] *)').length")
        reached = set()
        self.one("body").send_keys(Keys.TAB)
        for _ in range(2 * wanted + 40):
            element = self.page.switch_to.active_element
            if element.tag_name in ("button", "input", "textarea", "select"):
                reached.add(element.id)
                self.assertEqual(element.value_of_css_property("outline-style"), "solid")
            element.send_keys(Keys.TAB)
        self.assertEqual(len(reached), wanted)

    def test_the_page_fits_each_window_width_and_shows_the_conversation(self):
        self.write("narrow" * 20)
        self.run_pass()
        for width in (2560, 1280, 1000, 600, 390, 320):
            with self.subTest(width=width):
                self.page.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                    "width": width, "height": 800, "deviceScaleFactor": 1, "mobile": False})
                hidden, conversation = self.page.execute_script(
                    "const all = document.documentElement;"
                    "return [all.scrollWidth - all.clientWidth, document.querySelector('#conversation').clientHeight]")
                self.assertEqual(hidden, 0)
                self.assertGreater(conversation, 250)
        self.page.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})

    def test_controls_stand_out_from_their_background(self):
        for scheme in ("light", "dark"):
            self.page.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": scheme}]})
            with self.subTest(scheme):
                self.assertGreater(self.page.execute_script(LEAST_CONTRAST), 3)
        self.page.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})

    def test_nothing_external_is_loaded_and_the_browser_logs_no_error(self):
        loaded = self.page.execute_script("return performance.getEntriesByType('resource').map(one => one.name)")
        self.assertGreaterEqual(len(loaded), 2)
        self.assertEqual([one for one in loaded if not one.startswith(self.address)], [])
        self.assertEqual(self.page.get_log("browser"), [])

    def test_only_requests_of_the_page_are_answered(self):
        host = self.address.split("/")[2]
        port = host.split(":")[1]
        rows = [  # name, method, Host, Origin, status
            ("the page at 127.0.0.1", "GET", host, None, 200),
            ("the page at localhost", "GET", f"localhost:{port}", None, 200),
            ("the page at [::1]", "GET", f"[::1]:{port}", None, 200),
            ("the page at another host", "GET", f"example.org:{port}", None, 403),
            ("the page at another port", "GET", "127.0.0.1:1", None, 403),
            ("the page without a host", "GET", "", None, 403),
            ("a command from 127.0.0.1", "POST", host, f"http://{host}", 200),
            ("a command from localhost", "POST", f"localhost:{port}", f"http://localhost:{port}", 200),
            ("a command from another site", "POST", host, "http://example.org", 403),
            ("a command from a page in a file", "POST", host, "null", 403),
            ("a command without an origin", "POST", host, None, 403),
            ("a command after DNS rebinding", "POST", f"example.org:{port}", f"http://example.org:{port}", 403),
            ("another site reads the page", "GET", host, None, 403, "cross-site"),
            ("the page reads its own data", "GET", host, None, 200, "same-origin"),
            ("a person types the address", "GET", host, None, 200, "none"),
        ]
        for name, method, named, origin, status, *site in rows:
            with self.subTest(name):
                connection = http.client.HTTPConnection(host)
                connection.putrequest(method, "/" if method == "GET" else "/command", skip_host=True)
                headers = {"Host": named, "Origin": origin, "Content-Length": "6" if method == "POST" else None,
                           "Sec-Fetch-Site": site[0] if site else None}
                for header, value in headers.items():
                    if value is not None:
                        connection.putheader(header, value)
                connection.endheaders(b"status" if method == "POST" else None)
                self.assertEqual(connection.getresponse().status, status)
                connection.close()


unittest.main(verbosity=2)
