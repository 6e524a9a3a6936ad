"""Writes records of runs by hand, with all that a report has to show."""

import json
import struct
import zlib


def png(width, height, pixels=()):
    """A grey picture; `pixels` are (x, y) that are red."""
    rows = [bytearray(b"\0" + b"\xd8" * (3 * width)) for _ in range(height)]
    for x, y in pixels:
        rows[y][1 + 3 * x : 4 + 3 * x] = b"\xff\0\0"

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", header)
        + chunk(b"IDAT", zlib.compress(b"".join(rows)))
        + chunk(b"IEND", b"")
    )


def pdf(text):
    """A page with a text; its cross-reference table is left for the reader to make."""
    drawing = f"BT /F 20 Tf 20 50 Td ({text}) Tj ET"
    font = "<</Font<</F<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>>>>>"
    return (
        f"%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
        f"3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 100]/Contents 4 0 R/Resources{font}>>endobj\n"
        f"4 0 obj<</Length {len(drawing)}>>stream\n{drawing}\nendstream endobj\ntrailer<</Root 1 0 R>>\n"
    )


def span(text, kind="same", **more):
    return {"kind": kind, "text": text, **more}


def line(kind, master, output, *spans, **more):
    numbers = {"masterLine": master} if master else {}
    numbers |= {"outputLine": output} if output else {}
    return {"kind": kind, **numbers, "spans": list(spans), **more}


def text_hunk(group, at, removed, added, mask=None):
    """One changed word in a line between others, perhaps with a masked stretch."""
    masked = [span(mask[1], "masked", rule=mask[0])] if mask else []
    return {
        "place": "",
        "groups": [group],
        "lines": [
            line("context", at - 1, at - 1, span("<tr>")),
            line("removed", at, 0, span("<td>Total</td><td>"), span(removed, "changed"), span("</td>"), *masked),
            line("added", 0, at, span("<td>Total</td><td>"), span(added, "changed"), span("</td>"), *masked),
            line("context", at + 1, at + 1, span("</tr>")),
        ],
    }


def value_hunk(group, place, removed, added):
    lines = [line("removed", 3, 0, span(removed, "changed"))] if removed is not None else []
    lines += [line("added", 0, 3, span(added, "changed"))] if added is not None else []
    return {"place": place, "groups": [group], "lines": lines}


def difference(kind, hunks, notes=(), count=None):
    """A difference; the words of its changes are those that its hunks mark."""
    changes = {}
    for hunk in hunks:
        group = hunk["groups"][0]
        change = changes.setdefault(group, {"group": group, "removed": "", "added": "", "count": 0})
        change["count"] += 1
        for each in hunk["lines"]:
            if each["kind"] != "context":
                words = [piece["text"] for piece in each["spans"] if piece["kind"] == "changed"]
                change[each["kind"]] = words[0] if words else ""
    return {
        "kind": kind,
        "notes": list(notes),
        "hunks": hunks,
        "hunkCount": count or len(hunks),
        "coarse": False,
        "changes": list(changes.values()),
    }


def pair(name, form="html", verdict="passed", folder="sales", **more):
    extension = {"csv": "csv", "json": "json", "pdf": "pdf"}.get(form, "png" if form.endswith("-png") else "html")
    stem = name if isinstance(name, str) else "name"
    report = f"../suite/{folder}/{stem}.xml"
    file = f"{stem}.{extension}" if isinstance(name, str) else name
    prefix = f"../suite/{folder}/Masters/"
    master = prefix + file if isinstance(file, str) else {"hex": prefix.encode().hex() + file["hex"]}
    return {
        "report": report,
        "format": form,
        "subFolder": "",
        "master": master,
        "output": f"../webcontent/bi/v5Debug/{stem}.{extension}",
        "masterPath": "",
        "outputPath": "",
        "verdict": verdict,
        "seconds": 0.0123,
        "cpuSeconds": 0.01,
        "masterFile": {"size": 20_000},
        "outputFile": {"size": 20_001},
        **more,
    }


def write_record(folder, pairs, evidence=(), **run):
    """Writes a record; returns the hashes under which `evidence` is kept, made up by their number."""
    (folder / "evidence").mkdir(parents=True)
    totals = {}
    for each in pairs:
        totals[each["verdict"]] = totals.get(each["verdict"], 0) + 1
    header = {
        "version": 1,
        "program": "0.1.0",
        "commandLine": ["orvdiff", "verify", "../suite"],
        "formats": {"names": [], "subFolders": [], "folderSuffix": "", "layoutSchema": "",
                    "layoutNamespace": "", "places": {}},
        "findings": [],
        "workingFolder": "/srv/night/work",
        "host": "build-7",
        "start": "2026-11-23T02:00:00Z",
        "end": "2026-11-23T02:01:35Z",
        "shards": {"indices": [1], "count": 1},
        "suite": "0" * 32,
        "reports": len(pairs),
        "pairs": len(pairs),
        "totals": totals,
        "unverified": [],
        "notes": [],
        "mayBeEmpty": False,
        "status": 0 if set(totals) <= {"passed"} else 1,
        "complete": True,
    }
    (folder / "run.json").write_text(json.dumps(header | run))
    (folder / "pairs.jsonl").write_text("".join(json.dumps(each) + "\n" for each in pairs))
