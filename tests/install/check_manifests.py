#!/usr/bin/python3
"""Whether the manifests of a release hold what their readers require, and the truth:

    check_manifests.py DIST PROGRAMS

The rules for winget are those of its schemas, version 1.6.0; no winget has read the manifests yet. PROGRAMS
is the folder of the zip's programs, which the bill of materials (SPDX 2.3) describes.
"""

import glob
import hashlib
import json
import re
import sys

import yaml

VERSION_RULES = {"PackageIdentifier": r"[^.\s\\/:*?\"<>|]{1,32}(\.[^.\s\\/:*?\"<>|]{1,32}){1,7}",
                 "PackageVersion": r"[^\\/:*?\"<>|]{1,128}", "ManifestVersion": r"1\.6\.0"}
LOCALE = r"[a-zA-Z]{2,3}(-[a-zA-Z0-9]{2,8})*"
# By manifest: the fields that have to be there, and what they match as a whole.
WINGET = {
    "version": {"DefaultLocale": LOCALE},
    "installer": {"Installers": r"(?s).+", "InstallerType": "nullsoft", "ReleaseDate": r"\d{4}-\d\d-\d\d",
                  "UpgradeBehavior": "install|uninstallPrevious|deny",
                  "MinimumOSVersion": r"\d+(\.\d+){1,3}"},
    "defaultLocale": {"PackageLocale": LOCALE, "Publisher": ".{2,256}", "PackageName": ".{2,256}",
                      "License": ".{3,512}", "ShortDescription": ".{3,256}", "Moniker": ".{1,40}",
                      "Description": "(?s).{3,10000}"},
}
INSTALLER = {"Architecture": "x64", "Scope": "user|machine", "InstallerUrl": "https?://.+",
             "InstallerSha256": "[A-Fa-f0-9]{64}"}
RESPONSES = {"packageInUse", "cancelledByUser", "invalidParameter", "custom", "contactSupport"}

failed = False


def check(what, holds):
    global failed
    if not holds:
        failed = True
        print("FAILED:", what)


def check_fields(name, fields, rules):
    for field, rule in rules.items():
        check(f"{name}: {field} is {fields.get(field)!r}", re.fullmatch(rule, str(fields.get(field, ""))))


def digest(path, kind):
    with open(path, "rb") as file:
        return hashlib.new(kind, file.read()).hexdigest()


def check_winget(dist):
    (setup,) = glob.glob(f"{dist}/korvex-*-setup-x64.exe")
    manifests = {}
    for path in glob.glob(f"{dist}/winget/*.yaml"):
        with open(path, encoding="utf-8") as file:
            fields = yaml.safe_load(file)
        manifests[fields["ManifestType"]] = fields
        check_fields(path, fields, VERSION_RULES | WINGET[fields["ManifestType"]])
        check(f"{path} is of {setup}", f"korvex-{fields['PackageVersion']}-setup" in setup)
    check("one manifest of each kind", manifests.keys() == WINGET.keys())
    check("one package", len({fields["PackageIdentifier"] for fields in manifests.values()}) == 1)
    installer = manifests["installer"]
    for one in installer["Installers"]:
        check_fields("installer", one, INSTALLER)
        check("digest of the installer", one["InstallerSha256"].lower() == digest(setup, "sha256"))
        check("address of the installer", one["InstallerUrl"].endswith("/" + setup.split("/")[-1]))
    check("for one user and for all",
          [(one["Scope"], one.get("InstallerSwitches")) for one in installer["Installers"]] ==
          [("user", None), ("machine", {"Custom": "/AllUsers"})])
    check("responses", {code["ReturnResponse"] for code in installer["ExpectedReturnCodes"]} <= RESPONSES)


def check_bill(dist, programs):
    (path,) = glob.glob(f"{dist}/korvex-*-windows-x64.spdx.json")
    with open(path, encoding="utf-8") as file:
        bill = json.load(file)
    check_fields("bill", bill, {"spdxVersion": r"SPDX-2\.3", "dataLicense": "CC0-1.0", "name": ".+",
                                "SPDXID": "SPDXRef-DOCUMENT", "documentNamespace": "[a-z]+:[^#]+"})
    check("creators", all(re.match("(Person|Organization|Tool): ", creator)
                          for creator in bill["creationInfo"]["creators"]))
    elements = bill["packages"] + bill["files"]
    known = [element["SPDXID"] for element in elements] + ["SPDXRef-DOCUMENT"]
    check("each has a name of its own", len(known) == len(set(known)))
    check("names", all(re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", name) for name in known))
    for relation in bill["relationships"]:
        check(f"both ends of {relation}",
              {relation["spdxElementId"], relation["relatedSpdxElement"]} <= set(known))
    for package in bill["packages"]:
        check_fields(package["name"], package, {
            "downloadLocation": ".+", "versionInfo": r"\d.*", "licenseDeclared": "(?!NOASSERTION).+",
            "supplier": "Organization: .+"})
    for file in bill["files"]:
        check(f"digests of {file['fileName']}",
              [one["algorithm"] for one in file["checksums"]] == ["SHA1", "SHA256"])

    # Against what is handed out.
    versions = {package["name"]: package["versionInfo"] for package in bill["packages"]}
    with open(f"{programs}/../NOTICES.txt", encoding="utf-8") as notices:
        text = notices.read()
    for name in versions:
        check(f"NOTICES.txt names {name}", name in text)
    held = {"korvex": set(), "korvex-convert": set(), "workbook-dump": set()}
    for relation in bill["relationships"]:
        if relation["relationshipType"] == "STATIC_LINK":
            program = relation["spdxElementId"].removeprefix("SPDXRef-File-").removesuffix(".exe")
            held[program].add(relation["relatedSpdxElement"].removeprefix("SPDXRef-Package-"))
    every = {"GCC", "mingw-w64", "zlib", "libdeflate"}
    check(f"libraries: {held}", held == {
        "korvex": every | {"wxWidgets"}, "korvex-convert": every | {"CLI11"}, "workbook-dump": every})
    for program in held:
        (file,) = [file for file in bill["files"] if file["fileName"] == f"./{program}.exe"]
        check(f"digest of {program}", file["checksums"][1]["checksumValue"] ==
              digest(f"{programs}/{program}.exe", "sha256"))
        with open(f"{programs}/{program}.exe", "rb") as content:
            zlib = re.search(rb"inflate (\d+(\.\d+)+) Copyright", content.read())
        check(f"zlib of {program}", zlib and versions["zlib"].startswith(zlib[1].decode()))


check_winget(sys.argv[1])
check_bill(sys.argv[1], sys.argv[2])
sys.exit(failed)
