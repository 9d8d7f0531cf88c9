#!/usr/bin/env python3
"""Forwards scapy-built frames through `mplsfwd-sim forward` and decodes what leaves with tshark.

Every family of examples/pcap/families.json is sent at least once; tshark's fields (eth.dst,
vlan.id, mpls.label, mpls.bottom, mpls.ttl, ip.dst) are compared with what the programmed
tables say. Bad capture files must fail with the file and frame named, keeping earlier frames.

usage: forward_pcap_test.py SIM SCENARIO WORKDIR [--write-example DIR]
"""
import os
import struct
import subprocess
import sys

from scapy.all import IP, UDP, Dot1Q, Ether, IPv6, Raw, wrpcap
from scapy.contrib.mpls import MPLS

ROUTER = "00:1c:73:00:00:01"
HOST = "00:00:5e:00:53:aa"


def mpls(*stack):
    """MPLS headers from (label, ttl) pairs, bottom bit on the last."""
    out = None
    for i, (label, ttl) in enumerate(stack):
        h = MPLS(label=label, ttl=ttl, s=1 if i == len(stack) - 1 else 0)
        out = h if out is None else out / h
    return out


def eth():
    return Ether(dst=ROUTER, src=HOST)


def ip4(dst, ttl=64, sport=49152):
    return IP(src="192.0.2.1", dst=dst, ttl=ttl) / UDP(sport=sport, dport=4789)


def inner(dst="00:00:5e:00:53:02", vlan=None):
    e = Ether(dst=dst, src="00:00:5e:00:53:01")
    if vlan is not None:
        e = e / Dot1Q(vlan=vlan)
    return e / IP(src="192.0.2.7", dst="10.7.0.1") / UDP(sport=1, dport=2)


def fnv(data: bytes) -> int:
    h = 14695981039346656037
    for b in data:
        h = ((h ^ b) * 1099511628211) & 0xFFFFFFFFFFFFFFFF
    return h


def ecmp_member(labels, src, dst, proto, sport, dport, members):
    """The documented flow hash: FNV-1a 64 over each label (3 bytes, low byte first), the IP
    addresses in text form, the protocol (1 byte) and the ports (2 bytes, low byte first)."""
    data = b"".join(struct.pack("<I", label)[:3] for label in labels)
    data += src.encode() + dst.encode() + bytes([proto]) + struct.pack("<HH", sport, dport)
    return fnv(data) % members


# (family, frame, expectation): an expectation is a dict of tshark fields, or ("dropped", reason).
def cases():
    out = [
        ("swap", eth() / mpls((100, 64), (16, 64)) / ip4("10.9.0.1"),
         {"eth.dst": "00:1c:73:00:00:02", "vlan.id": "10", "mpls.label": "2000,16",
          "mpls.bottom": "0,1", "mpls.ttl": "63,64", "ip.dst": "10.9.0.1"}),
        ("pop", eth() / mpls((101, 20)) / ip4("10.9.0.2"),
         {"eth.dst": "00:1c:73:00:00:03", "vlan.id": "20", "mpls.label": "", "ip.dst": "10.9.0.2",
          "ip.ttl": "19"}),
        ("pop", eth() / mpls((101, 20), (16, 64)) / ip4("10.9.0.2"),
         {"mpls.label": "16", "mpls.bottom": "1", "mpls.ttl": "19", "ip.ttl": "64"}),
        ("fec", eth() / mpls((103, 64)) / ip4("10.9.0.3"),
         {"eth.dst": "00:1c:73:00:00:03", "vlan.id": "20", "mpls.label": "4000",
          "mpls.bottom": "1", "mpls.ttl": "63", "ip.dst": "10.9.0.3"}),
        ("decap-vrf", eth() / mpls((500, 9)) / ip4("10.8.0.1"),
         {"eth.dst": ROUTER, "vlan.id": "", "mpls.label": "", "ip.dst": "10.8.0.1", "ip.ttl": "8"}),
        ("decap-vrf6", eth() / mpls((505, 9)) / IPv6(src="2001:db8::1", dst="2001:db8::9") / UDP(),
         {"mpls.label": "", "ipv6.dst": "2001:db8::9", "ipv6.hlim": "8"}),
        ("decap-vlan", eth() / mpls((501, 9)) / inner(),
         {"eth.dst": "00:00:5e:00:53:02", "vlan.id": "100", "mpls.label": "", "ip.dst": "10.7.0.1"}),
        ("decap-flood", eth() / mpls((502, 9)) / inner("ff:ff:ff:ff:ff:ff"),
         {"eth.dst": "ff:ff:ff:ff:ff:ff", "vlan.id": "200", "mpls.label": ""}),
        ("decap-dot1q", eth() / mpls((503, 9)) / inner(vlan=10),
         {"vlan.id": "1010", "mpls.label": "", "ip.dst": "10.7.0.1"}),
        ("pw-vlan", eth() / mpls((801, 9)) / inner("00:00:5e:00:53:07"),
         {"eth.dst": "00:00:5e:00:53:07", "vlan.id": "300", "mpls.label": ""}),
        ("pw-port", eth() / mpls((800, 9)) / inner(vlan=7),
         {"vlan.id": "7", "mpls.label": ""}),
        ("no-route", eth() / mpls((999, 9)) / ip4("10.9.9.9"), ("dropped", "no route")),
        ("ttl", eth() / mpls((100, 1)) / ip4("10.9.9.9"), ("dropped", "TTL expired")),
        ("dot1q-miss", eth() / mpls((503, 9)) / inner(vlan=30), ("dropped", "no route")),
    ]
    macs = {0: "00:1c:73:00:00:02", 1: "00:1c:73:00:00:03"}
    labels = {0: "3000", 1: "3001"}
    for sport in range(40000, 40008):
        m = ecmp_member([102], "192.0.2.1", "10.6.0.1", 17, sport, 4789, 2)
        out.append(("ecmp", eth() / mpls((102, 64)) / ip4("10.6.0.1", sport=sport),
                    {"eth.dst": macs[m], "mpls.label": labels[m], "mpls.ttl": "63"}))
    return out


FIELDS = ["eth.dst", "vlan.id", "mpls.label", "mpls.bottom", "mpls.ttl", "ip.dst", "ip.ttl",
          "ipv6.dst", "ipv6.hlim"]


def tshark(path):
    cmd = ["tshark", "-r", path, "-T", "fields", "-E", "separator=\t", "-E", "occurrence=a",
           "-E", "aggregator=,"]
    for f in FIELDS:
        cmd += ["-e", f]
    rows = subprocess.run(cmd, check=True, capture_output=True, text=True).stdout.splitlines()
    return [dict(zip(FIELDS, r.split("\t"))) for r in rows]


def forward(sim, scenario, pin, pout):
    return subprocess.run([sim, "forward", scenario, "--in", pin, "--out", pout,
                           "--ingress", "Ethernet3"], capture_output=True, text=True)


def main():
    sim, scenario, work = sys.argv[1:4]
    os.makedirs(work, exist_ok=True)
    pin, pout = os.path.join(work, "in.pcap"), os.path.join(work, "out.pcap")
    all_cases = cases()
    wrpcap(pin, [frame for _, frame, _ in all_cases])
    run = forward(sim, scenario, pin, pout)
    failures = []
    if run.returncode != 0:
        failures.append(f"forward exited {run.returncode}: {run.stderr}")
    report = [line.split(": ", 1)[1] for line in run.stdout.splitlines()]
    decoded = iter(tshark(pout))
    checked = {}
    for (family, _, want), outcome in zip(all_cases, report):
        if isinstance(want, tuple):
            if outcome != f"dropped: {want[1]}":
                failures.append(f"{family}: expected dropped: {want[1]}, report says {outcome}")
            checked[family] = checked.get(family, 0) + 1
            continue
        if outcome.startswith("dropped"):
            failures.append(f"{family}: dropped ({outcome})")
            continue
        got = next(decoded, {})
        for field, value in want.items():
            if got.get(field, "") != value:
                failures.append(f"{family}: {field} expected '{value}', tshark found "
                                f"'{got.get(field, '')}'")
        checked[family] = checked.get(family, 0) + 1
    if len(report) != len(all_cases):
        failures.append(f"report has {len(report)} lines for {len(all_cases)} frames")
    for family, n in sorted(checked.items()):
        print(f"{family}: {n} frame(s) compared")

    # Bad capture files: the file and the frame are named, earlier frames are still written.
    data = open(pin, "rb").read()
    bad = {
        "truncated.pcap": (data[:-10], "truncated.pcap: frame %d: truncated" % len(all_cases)),
        "not.pcap": (b"this is not a capture file at all", "not.pcap: not a readable pcap file"),
    }
    raw = os.path.join(work, "raw.pcap")
    wrpcap(raw, [IP(dst="10.0.0.1") / UDP()], linktype=101)
    bad["raw.pcap"] = (open(raw, "rb").read(), "raw.pcap: frame 1: not an Ethernet frame")
    for name, (content, message) in bad.items():
        path = os.path.join(work, name)
        with open(path, "wb") as f:
            f.write(content)
        out = os.path.join(work, "bad-out.pcap")
        r = forward(sim, scenario, path, out)
        if r.returncode != 2 or message not in r.stderr:
            failures.append(f"{name}: expected exit 2 and '{message}', got {r.returncode}: "
                            f"{r.stderr.strip()}")
        if name == "truncated.pcap":
            written = len(tshark(out))
            expect = sum(1 for _, _, w in all_cases[:-1] if not isinstance(w, tuple))
            if written != expect:
                failures.append(f"truncated.pcap: {written} frames written before the bad one, "
                                f"expected {expect}")
    if "--write-example" in sys.argv:
        dest = sys.argv[sys.argv.index("--write-example") + 1]
        for name in ("in.pcap", "out.pcap"):
            with open(os.path.join(work, name), "rb") as s, open(os.path.join(dest, name), "wb") as d:
                d.write(s.read())
    for f in failures:
        print("FAIL", f)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
