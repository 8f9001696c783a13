"""Stands before a server and counts what it is asked."""
import collections
import contextlib
import http.client
import http.server
import threading
import time


class Proxy(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, server):
        super().__init__(("127.0.0.1", 0), Handler)
        self.behind = server.port
        self.origin = f"http://127.0.0.1:{self.server_port}"
        self.asked = []  # (when, method)

    def counts(self):
        return dict(collections.Counter(method for _, method in self.asked))

    def clear(self):
        self.asked.clear()


class Handler(http.server.BaseHTTPRequestHandler):
    def handle_any(self):
        self.server.asked.append((time.monotonic(), self.command))
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        line = http.client.HTTPConnection("127.0.0.1", self.server.behind, timeout=60)
        # The Host header stays the proxy's: addresses that the server writes out lead through it again.
        headers = {name: value for name, value in self.headers.items() if name.lower() not in ("connection", "upgrade")}
        line.request(self.command, self.path, body, {**headers, "Connection": "close"})
        answer = line.getresponse()
        text = answer.read()
        self.send_response(answer.status, answer.reason)
        for name, value in answer.getheaders():
            if name.lower() not in ("connection", "transfer-encoding", "content-length", "server", "date"):
                self.send_header(name, value)
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text)
        line.close()

    do_GET = do_PUT = do_DELETE = do_OPTIONS = do_PROPFIND = do_PROPPATCH = do_REPORT = do_MKCALENDAR = handle_any

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def in_front_of(server):
    with Proxy(server) as proxy:
        threading.Thread(target=proxy.serve_forever, daemon=True).start()
        try:
            yield proxy
        finally:
            proxy.shutdown()
