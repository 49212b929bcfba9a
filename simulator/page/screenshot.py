"""Takes a picture of the page in use: screenshot.py GATEWAY PICTURE. scripts/screenshot runs this."""
import re
import subprocess
import sys
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

GATEWAY, PICTURE = sys.argv[1:]
COMMANDS = ['receive +4917099999 "The pump has stopped."', "refuse +4917022222", "pass",
            'queue +4917022222 "Tank 3 is nearly empty" --retries 3', 'receive +4917012345 "p secret #ping 8.8.8.8 3"',
            "pass", "pass"]
FLAGS = ("headless=new no-sandbox disable-gpu disable-quic no-first-run disable-background-networking "
         "disable-component-update disable-sync disable-dev-shm-usage hide-scrollbars window-size=1280,1000").split()
RUN = """const [line, done] = arguments;
fetch("/command", { method: "POST", body: line }).then((answer) => done(answer.status));"""


def main():
    gateway = subprocess.Popen([GATEWAY, "--page", "0"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
    address = re.search(r"http://\S+/", gateway.stdout.readline()).group()
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    with tempfile.TemporaryDirectory(dir=".", ignore_cleanup_errors=True) as profile:
        for flag in FLAGS + [f"user-data-dir={profile}"]:
            options.add_argument("--" + flag)
        page = webdriver.Chrome(service=Service("/usr/bin/chromedriver", env={"TMPDIR": profile}), options=options)
        page.get(address)
        for text in COMMANDS:
            assert page.execute_async_script(RUN, text) == 200, text
        last = ("do_ping_through_sms: done", "The answer is message", "3 retries left")
        WebDriverWait(page, 20).until(lambda _: all(text in page.page_source for text in last))
        page.save_screenshot(PICTURE)
        page.quit()
    gateway.terminate()
    sys.exit(gateway.wait(30))


main()
