"""Writes the MSI's WiX source: the files of both DLLs, and as registry rows
what each DLL's registration wrote (the difference between two exports of
HKEY_CLASSES_ROOT, before and after regsvr32).

    msi_rows.py VERSION STAGE WORK    (WORK holds before.txt, x64.txt, x86.txt)

The files' sources are relative to STAGE: run wixl there.
"""
import re
import sys
import uuid
from pathlib import Path
from xml.sax.saxutils import quoteattr

# Fixed for ever: a newer package of the same code replaces an older one.
UPGRADE_CODE = "6A0C51D4-2B77-4E53-9A1E-3F1B0E6C7D21"
NAMESPACE = uuid.UUID(UPGRADE_CODE)
ROOT = "HKEY_CLASSES_ROOT\\"
WOW = "Wow6432Node\\"
FOLDERS = {"x64": ("C:\\Program Files\\Ostrel", "ProgramFiles64Folder"),
           "x86": ("C:\\Program Files (x86)\\Ostrel", "ProgramFilesFolder")}


def parse(path):
    """{key: {name: value}} of a reg export; name "" is the default value."""
    keys, key = {}, None
    for line in Path(path).read_text().splitlines():
        if line.startswith("[") and line.endswith("]"):
            key = line[1:-1]
            keys[key] = {}
        elif key and line.startswith(("@=", '"')):
            match = re.match(r'^(@|"((?:[^"\\]|\\.)*)")="((?:[^"\\]|\\.)*)"$', line)
            if not match:  # another type: only a change of it matters, see added()
                keys[key][line.split("=", 1)[0]] = (line,)
                continue
            unescape = lambda text: re.sub(r"\\(.)", r"\1", text)
            keys[key]["" if match.group(1) == "@" else unescape(match.group(2))] = unescape(match.group(3))
    return keys


def added(before, after):
    """(key, name or None, value) for each key and value registration added."""
    rows = []
    for key, values in after.items():
        if key not in before:
            rows.append((key, None, None))
        for name, value in values.items():
            if before.get(key, {}).get(name) != value:
                if isinstance(value, tuple):
                    sys.exit(f"registration wrote a value that is not a string: {key}: {value[0]}")
                rows.append((key, name, value))
    return rows


def guid(name):
    return str(uuid.uuid5(NAMESPACE, name)).upper()


def main():
    version, stage, work = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])
    before = parse(work / "before.txt")
    components = {}  # (bitness, view) -> rows
    written = {}  # view -> {(key, name): value} of the 64-bit registration
    for bitness in ("x64", "x86"):
        folder, folder_property = FOLDERS[bitness]
        for key, name, value in added(before, parse(work / f"{bitness}.txt")):
            if not key.startswith(ROOT):
                sys.exit(f"registration wrote outside HKEY_CLASSES_ROOT: {key}")
            key = key[len(ROOT):]
            # The view the key landed in, as the 64-bit export shows it: a
            # 32-bit registration's ProgIDs land in the shared part.
            view = "32" if key.startswith(WOW) else "64"
            if key.startswith(WOW):
                key = key[len(WOW):]
            # A value both DLLs write (the type library's help folder) keeps
            # the 64-bit DLL's data, as registering both leaves it.
            if bitness == "x86" and name is not None and (key, name) in written.get(view, {}):
                continue
            if bitness == "x64" and name is not None:
                written.setdefault(view, {})[(key, name)] = value
            if value is not None:
                # The install folder as the package knows it.
                value = value.replace(folder + "\\Ostrel.dll", f"[#{bitness}_Ostrel.dll]")
                value = value.replace(folder, f"[{folder_property}]Ostrel")
            components.setdefault((bitness, view), []).append((key, name, value))

    out = []
    w = out.append
    w('<?xml version="1.0" encoding="utf-8"?>')
    w('<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">')
    w(f'  <Product Id="*" Name="Ostrel" Language="1033" Version="{version}" '
      f'Manufacturer="Ostrel developers" UpgradeCode="{UPGRADE_CODE}">')
    w('    <Package InstallerVersion="500" Compressed="yes" InstallScope="perMachine" '
      'Description="Ostrel automation server, 64-bit and 32-bit"/>')
    w('    <MajorUpgrade DowngradeErrorMessage="A newer version of Ostrel is installed already."/>')
    w('    <Media Id="1" Cabinet="ostrel.cab" EmbedCab="yes"/>')
    w('    <Directory Id="TARGETDIR" Name="SourceDir">')
    refs = []
    for bitness, parent, win64 in (("x64", "ProgramFiles64Folder", "yes"), ("x86", "ProgramFilesFolder", "no")):
        w(f'      <Directory Id="{parent}">')
        w(f'        <Directory Id="INSTALLDIR_{bitness}" Name="Ostrel">')
        files = sorted(p for p in (stage / bitness).iterdir() if p.is_file())
        if bitness == "x86":  # the tool once, the 64-bit one
            files = [p for p in files if p.name != "ostrel.exe"]
        for path in files:
            cid = f"{bitness}_{path.name}".replace("-", "_")
            refs.append(cid)
            keypath = ' KeyPath="yes"'
            w(f'          <Component Id="c_{cid}" Guid="{guid(cid)}" Win64="{win64}">')
            w(f'            <File Id="{bitness}_{path.name}" Name="{path.name}" Source="{bitness}/{path.name}"{keypath}/>')
            w('          </Component>')
        for (owner, view), rows in sorted(components.items()):
            if owner != bitness or not rows:
                continue
            cid = f"registry_{owner}_view{view}"
            refs.append(cid)
            w(f'          <Component Id="c_{cid}" Guid="{guid(cid)}" Win64="{"yes" if view == "64" else "no"}">')
            valued = {key for key, name, _ in rows if name is not None}
            keypath = ' KeyPath="yes"'
            # Ids of their own: both DLLs write the same keys, each in its view.
            for number, (key, name, value) in enumerate(rows):
                rid = f' Id="r_{owner}_{view}_{number}"'
                if name is None:
                    # A key registration makes even with no value in it.
                    # ("*": made on install, removed on uninstall).
                    if key not in valued:
                        w(f'            <RegistryValue{rid} Root="HKCR" Key={quoteattr(key)} Name="*" Type="string" Value=""/>')
                    continue
                name_attr = f" Name={quoteattr(name)}" if name else ""
                w(f'            <RegistryValue{rid} Root="HKCR" Key={quoteattr(key)}{name_attr} '
                  f'Type="string" Value={quoteattr(value)}{keypath}/>')
                keypath = ""
            w('          </Component>')
        w('        </Directory>')
        w('      </Directory>')
    w('    </Directory>')
    w('    <Feature Id="Complete" Title="Ostrel" Level="1">')
    for cid in refs:
        w(f'      <ComponentRef Id="c_{cid}"/>')
    w('    </Feature>')
    w('  </Product>')
    w('</Wix>')
    print("\n".join(out))


if __name__ == "__main__":
    main()
