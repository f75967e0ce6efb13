"""A website in a folder, sealed: what its pages reach through the private scheme."""

import os
from pathlib import Path

import pytest
from rig.site import PAGE

FONT = Path("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")
BIG = 5_000_000  # bytes; far more than the engine reads at once
CHECKS = """
const checks = {
  async "a page of the scheme"() { return location.origin === "qxlocal://local" && isSecureContext },
  async "whole file"() {
    const answer = await fetch("big.bin"), bytes = new Uint8Array(await answer.arrayBuffer())
    return answer.status === 200 && bytes.length === BIG && bytes.every((byte, i) => byte === i % 251)
  },
  async "range"() {
    const answer = await fetch("big.bin", { headers: { Range: "bytes=250-1249" } })
    const bytes = new Uint8Array(await answer.arrayBuffer())
    return answer.status === 206 && answer.headers.get("Content-Range") === `bytes 250-1249/${BIG}`
      && bytes.length === 1000 && bytes[0] === 250 && bytes[999] === 1249 % 251
  },
  async "many at once"() {
    const all = await Promise.all(Array.from({ length: 200 }, () => fetch("big.bin", { headers: { Range: "bytes=-9" } })))
    return all.every(answer => answer.status === 206)
  },
  async "route of an application"() {
    const answer = await fetch("/room/3")
    return answer.status === 200 && answer.headers.get("Content-Type") === "text/html; charset=utf-8"
  },
  async "modules"() { return (await import("./module.js")).answer === 42 },
  async "font"() { return (await new FontFace("own", "url(font.ttf)").load()).status === "loaded" },
  async "streamed WebAssembly"() { return (await WebAssembly.instantiateStreaming(fetch("empty.wasm"))).instance instanceof WebAssembly.Instance },
  async "storage that outlasts the run"() {
    const runs = localStorage.runs ?? "0"
    localStorage.runs = Number(runs) + 1
    return runs === await (await fetch("runs.txt")).text()
  },
}
for (const missing of ["missing.png", "pipe", "outside", "outside.txt", "..%252fsecret.txt"]) {
  checks[missing] = async () => {
    const answer = await fetch(missing)
    return answer.status === 404 && answer.headers.get("Access-Control-Allow-Origin") === "*" && !await answer.text()
  }
}
const failed = []
for (const [name, check] of Object.entries(checks)) {
  try { if (!await check()) failed.push(name) } catch (error) { failed.push(`${name}: ${error}`) }
}
if (failed.length) document.body.textContent = failed.join(", ")
else { document.open(); document.write(await (await fetch("bands.html")).text()); document.close() }
"""


@pytest.fixture
def folder(bed):
    site = bed.home.subfolder("site")
    (site / "index.html").write_text("<!doctype html><body><script type=module src=checks.js></script>")
    (site / "checks.js").write_text(f"const BIG = {BIG}\n{CHECKS}")
    (site / "bands.html").write_bytes(PAGE)
    (site / "module.js").write_text("export const answer = 42")
    (site / "font.ttf").write_bytes(FONT.read_bytes())
    (site / "empty.wasm").write_bytes(b"\0asm\1\0\0\0")
    (site / "runs.txt").write_text("0")
    (site / "big.bin").write_bytes((bytes(range(251)) * (BIG // 251 + 1))[:BIG])
    secret = bed.home.folder / "secret.txt"
    secret.write_text("secret")
    (site / "outside.txt").symlink_to(secret)
    (site / "outside").symlink_to(bed.home.folder)
    os.mkfifo(site / "pipe")
    return site


@pytest.mark.on("openbox")
def test_serves_the_folder_run_after_run_and_nothing_else(bed, folder):
    bed.settings(sourceKind="local", localPath=str(folder), autoStartKiosk=True)
    bed.start()
    bed.wait_sealed()
    assert bed.site.requests == 0
    bed.unseal()
    (folder / "runs.txt").write_text("1")
    bed.seal()
    bed.unseal()
    bed.close()
