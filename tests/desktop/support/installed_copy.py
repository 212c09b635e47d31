"""The application as it is installed, and archives of other builds of it, for what updates it."""

import importlib.machinery
import importlib.util
import io
import json
import os
import re
import shutil
import tempfile
import zipfile
from pathlib import Path

from update_world import run

NAME = "Torvane P2P Helper.app"
INSTALLED = "/Applications/" + NAME
BUILD, NEXT = "412", "413"

CHECK = "Check for Updates"
OFFER = f"Update Helper to Build {NEXT}…"

OURS = {"identifier": "app.torvane.p2p-helper", "team": "ZQ4W8N2HJT", "notarized": True}
NO_PROGRAM = b"not to be started\n"  # in applications that are refused before they could be

APPLICATION = "/tmp/application"  # as it was built, without its debugging information
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))


def take_application(bundle):
    """Before anything else here, in an update's world."""
    shutil.copytree(bundle, APPLICATION)
    if shutil.which("strip"):
        run("strip", os.path.join(APPLICATION, "bin/torvane-p2p-helper"))


def release_script():
    loader = importlib.machinery.SourceFileLoader(
        "make_release", os.path.join(ROOT, "scripts", "make-release"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_release", loader))
    loader.exec_module(module)
    return module


RELEASE = release_script()


def application(folder, build=NEXT, signed_by=OURS, program=None):
    """A copy of the application with this build number, signature and, instead of its own, program."""
    shutil.copytree(APPLICATION, folder, symlinks=True)
    if program:
        Path(folder, "bin/torvane-p2p-helper").write_bytes(program)
    for file, number in (("Info.json", r'("CFBundleVersion": )"\d+"'),
                         ("Contents/Info.plist", r"(<key>CFBundleVersion</key>\s*<string>)\d+")):
        path = Path(folder, file)
        quoted = f'"{build}"' if file.endswith("json") else build
        text, changes = re.subn(number, lambda found: found.group(1) + quoted, path.read_text())
        assert changes == 1, file
        path.write_text(text)
    if signed_by is not None:
        os.makedirs(os.path.join(folder, "Contents/_CodeSignature"))
        Path(folder, "Contents/_CodeSignature/signature.json").write_text(json.dumps(signed_by))
    return Path(folder)


def archive(change=None, program=NO_PROGRAM, **options):
    """The bytes of an archive whose application was changed by `change`."""
    with tempfile.TemporaryDirectory() as folder:
        app = application(os.path.join(folder, NAME), program=program, **options)
        if change:
            change(app)
        RELEASE.write_archive(app, os.path.join(folder, "zip"))
        return Path(folder, "zip").read_bytes()


def archive_of_entries(*entries, beside=b""):
    """One that holds these names and texts, beside what another holds; a text that begins with an
    arrow is a link."""
    out = io.BytesIO(beside)
    with zipfile.ZipFile(out, "a") as packed:
        for name, text in entries:
            entry = zipfile.ZipInfo(name)
            entry.create_system = 3
            entry.external_attr = (0o120777 if text.startswith("→") else 0o100644) << 16
            packed.writestr(entry, text.removeprefix("→"))
    return out.getvalue()
