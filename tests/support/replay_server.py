#!/usr/bin/env python3
"""A stand-in for the music database's web service and the cover archive, on 127.0.0.1.

    replay_server.py FIXTURES [--busy N] [--log FILE]

FIXTURES holds releases/<id>.json (a release as the service's lookup answers it, with
recordings, artist credits and labels) and covers/<id>.jpg. Searches are answered from those
releases in the service's search shape. Like the real services it refuses a request without
a User-Agent, answers 503 with Retry-After to a database request less than a second after the
one before (0.9 s, allowing for the time a request spends on its way) and to the first N with
--busy, and answers a cover request with a 307 redirect to the image. Prints "PORT <n>" once
listening; one log line per request: "<seconds> <status> <path>".
"""
import json
import os
import re
import sys
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

FIXTURES = sys.argv[1]
BUSY = int(sys.argv[sys.argv.index("--busy") + 1]) if "--busy" in sys.argv else 0
LOG = sys.argv[sys.argv.index("--log") + 1] if "--log" in sys.argv else None
state = {"last": None, "busy": BUSY}


def releases():
    folder = os.path.join(FIXTURES, "releases")
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), encoding="utf-8") as f:
            yield json.load(f)


def credit(release):
    return "".join(c["name"] + c.get("joinphrase", "") for c in release.get("artist-credit", []))


def matches(release, query):
    """The service's query syntax as far as Waxline uses it: field:"phrase" joined by AND."""
    for field, value in re.findall(r'(\w+):"((?:[^"\\]|\\.)*)"', query):
        value = value.replace('\\"', '"').replace("\\\\", "\\").lower()
        if field == "artist" and value not in credit(release).lower():
            return False
        if field == "release" and value not in release["title"].lower():
            return False
        if field == "barcode" and value != (release.get("barcode") or "").lower():
            return False
        if field == "catno" and value not in [
                (l.get("catalog-number") or "").lower() for l in release.get("label-info", [])]:
            return False
    return True


def summary(release, score):
    """A release as a search lists it: no tracks, the media with their formats and counts."""
    media = [{"format": m.get("format"), "disc-count": 0, "track-count": len(m["tracks"])}
             for m in release["media"]]
    keys = ["id", "title", "status", "artist-credit", "release-group", "date", "country",
            "barcode", "label-info"]
    hit = {k: release[k] for k in keys if k in release}
    hit.update({"score": score, "track-count": sum(m["track-count"] for m in media),
                "media": media})
    return hit


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def answer(self, status, body=b"", kind="application/json", headers=()):
        if LOG:
            with open(LOG, "a", encoding="utf-8") as f:
                f.write(f"{time.monotonic():.3f} {status} {self.path}\n")
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def error(self, status, text, headers=()):
        self.answer(status, json.dumps({"error": text}).encode(), headers=headers)

    def do_GET(self):
        if not self.headers.get("User-Agent", "").startswith("Waxline/"):
            return self.error(403, "a meaningful User-Agent is required")
        url = urllib.parse.urlsplit(self.path)
        if url.path.startswith("/ws/2/"):
            now = time.monotonic()
            too_soon = state["last"] is not None and now - state["last"] < 0.9
            state["last"] = now
            if state["busy"] > 0 or too_soon:
                state["busy"] = max(0, state["busy"] - 1)
                return self.error(503, "rate limit exceeded", [("Retry-After", "1")])
            return self.database(url)
        cover = re.fullmatch(r"/release/([0-9a-f-]+)/front(-\d+)?", url.path)
        if cover:
            if not os.path.exists(os.path.join(FIXTURES, "covers", cover.group(1) + ".jpg")):
                return self.error(404, "No cover art found for release")
            image = f"http://{self.headers.get('Host')}/images/{cover.group(1)}.jpg"
            return self.answer(307, f"See: {image}\n".encode(), "text/plain",
                               [("Location", image)])
        image = re.fullmatch(r"/images/([0-9a-f-]+)\.jpg", url.path)
        if image:
            path = os.path.join(FIXTURES, "covers", image.group(1) + ".jpg")
            if os.path.exists(path):
                with open(path, "rb") as f:
                    return self.answer(200, f.read(), "image/jpeg")
        return self.error(404, "Not Found")

    def database(self, url):
        query = urllib.parse.parse_qs(url.query)
        if url.path == "/ws/2/release":
            hits = [summary(r, 100) for r in releases() if matches(r, query.get("query", [""])[0])]
            body = {"created": "2026-11-25T00:00:00.000Z", "count": len(hits), "offset": 0,
                    "releases": hits[: int(query.get("limit", ["25"])[0])]}
            return self.answer(200, json.dumps(body).encode())
        for release in releases():
            if url.path == "/ws/2/release/" + release["id"]:
                return self.answer(200, json.dumps(release).encode())
        return self.error(404, "Not Found")


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
print("PORT", server.server_address[1], flush=True)
server.serve_forever()
