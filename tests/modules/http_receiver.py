"""A web service that keeps what it gets: a line of JSON for each request.

Argument: a JSON list of answers, {"status", "headers", "body", "drop", "endless"}; the last one is for all that follow.
"""
import http.server, json, sys

answers = json.loads(sys.argv[1])


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def answer(self):
        length = int(self.headers.get("Content-Length", 0))
        body = self.rfile.read(length).decode()
        headers = {name.lower(): value for name, value in self.headers.items()}
        print(json.dumps({"method": self.command, "path": self.path, "headers": headers, "body": body}), flush=True)
        answer = answers.pop(0) if len(answers) > 1 else answers[0]
        if answer.get("drop"):
            self.close_connection = True
            return
        content = answer.get("body", "").encode()
        self.send_response(answer.get("status", 200))
        for name, value in answer.get("headers", {}).items():
            self.send_header(name, value)
        if not answer.get("endless"):
            self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        try:
            self.wfile.write(content)
            while answer.get("endless"):
                self.wfile.write(b"x" * 65536)
        except OSError:
            self.close_connection = True

    do_POST = do_PUT = do_GET = answer

    def log_message(self, *_):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
