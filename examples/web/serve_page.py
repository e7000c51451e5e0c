"""The sample page in Big5, converted by the command, served by nginx as GBK, read by Chromium.

    serve_page.py COMMAND [PAGE]...      other pages in Big5 in place of the sample page

The text that the browser shows must be the one that OpenCC makes of the page.
"""

import html.parser
import os
import pathlib
import socket
import subprocess
import sys
import tempfile
import time

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent

# nginx announces the encoding, which counts for more than what the page says of itself. One
# process, every file in the working folder, so that any user can run it.
NGINX = """
daemon off; master_process off; pid nginx.pid; error_log stderr;
events {}
http {
  types { text/html html; }
  access_log off;
  client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;
  uwsgi_temp_path uwsgi; scgi_temp_path scgi;
  server {
    listen 127.0.0.1:%d; root .; charset gbk;
    location = /favicon.ico { return 204; }
  }
}
"""

CHROMIUM = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
            "--no-first-run", "--disable-background-networking", "--disable-component-update",
            "--disable-sync", "--dump-dom"]


class PageText(html.parser.HTMLParser):
    def __init__(self, page):
        super().__init__()
        self.text = ""
        self.feed(page)

    def handle_data(self, data):
        self.text += data

    def lines(self):
        return [line.strip() for line in self.text.splitlines() if line.strip()]


def serve(folder, port):
    (folder / "nginx.conf").write_text(NGINX % port)
    server = subprocess.Popen(["/usr/sbin/nginx", "-e", "stderr", "-p", str(folder), "-c", "nginx.conf"])
    for _ in range(100):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return server
        time.sleep(0.1)
    server.kill()
    raise SystemExit("nginx does not answer")


def free_port():
    with socket.socket() as any_port:
        any_port.bind(("127.0.0.1", 0))
        return any_port.getsockname()[1]


def shown(url, profile):
    return subprocess.run([*CHROMIUM, f"--user-data-dir={profile}", url], timeout=120,
                          capture_output=True, check=True).stdout.decode("utf-8")


def expected(page):
    text = subprocess.run(["iconv", "-f", "CP950", "-t", "UTF-8", page], capture_output=True,
                          check=True).stdout
    return subprocess.run(["opencc", "-c", "t2s"], input=text, capture_output=True,
                          check=True).stdout.decode("utf-8")


def main(command, *pages):
    needs = subprocess.run([EXAMPLES / "needs", "nginx-light", "chromium", "opencc"], check=False)
    if needs.returncode != 0:
        return needs.returncode
    pages = [pathlib.Path(page) for page in pages] or [EXAMPLES / "page.big5.html"]
    failed = False
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        port = free_port()
        for page in pages:
            subprocess.run([command, "-f", "big5", "-t", "gbk", page, "-o", folder / page.name],
                           check=True)
        server = serve(folder, port)
        try:
            for page in pages:
                dom = shown(f"http://127.0.0.1:{port}/{page.name}", folder / "profile")
                got, want = PageText(dom).lines(), PageText(expected(page)).lines()
                wrong = [pair for pair in zip(got, want) if pair[0] != pair[1]]
                for pair in wrong:
                    print(f"{page.name}: {pair[0]}\n    expected: {pair[1]}")
                if wrong or len(got) != len(want) or "\ufffd" in dom:
                    failed = True
                print(f"{page.name}: {len(got)} lines of {len(want)}, {len(wrong)} differ, "
                      f"{dom.count(chr(0xfffd))} replacement characters")
        finally:
            server.terminate()
            server.wait()
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
