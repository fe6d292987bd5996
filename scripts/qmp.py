#!/usr/bin/env python3
"""Talks to a running QEMU through its QMP socket (used by scripts/boot.sh).

  qmp.py SOCKET keys 'down down ret ctrl+c alt+f'   send keys (QEMU qcodes; '+' joins a combination)
  qmp.py SOCKET settle FILE.png [SECONDS]            wait until the screen stops changing, then save it
  qmp.py SOCKET shot FILE.png                        save the screen now
  qmp.py SOCKET plug IMAGE                           plug IMAGE in as a USB stick
  qmp.py SOCKET quit                                 power the machine off
"""
import json
import os
import socket
import sys
import time

KEY_GAP = 0.25        # seconds between two keys: the firmware polls its keyboard
SETTLE_GAP = 0.6      # seconds between two looks at the screen


class Qmp:
    def __init__(self, path):
        self.sock = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.sock.connect(path)
        self.file = self.sock.makefile("rwb")
        self.read()                       # greeting
        self.run("qmp_capabilities")

    def read(self):
        while True:
            line = self.file.readline()
            if not line:
                raise RuntimeError("QEMU closed the QMP connection")
            message = json.loads(line)
            if "event" not in message:
                return message

    def run(self, command, **arguments):
        request = {"execute": command}
        if arguments:
            request["arguments"] = arguments
        self.file.write((json.dumps(request) + "\n").encode())
        self.file.flush()
        reply = self.read()
        if "error" in reply:
            raise RuntimeError("%s: %s" % (command, reply["error"].get("desc", reply["error"])))
        return reply.get("return")

    def keys(self, text):
        for word in text.split():
            keys = [{"type": "qcode", "data": part} for part in word.split("+")]
            self.run("send-key", keys=keys, **{"hold-time": 80})
            time.sleep(KEY_GAP)

    def shot(self, path):
        directory = os.path.dirname(os.path.abspath(path))
        os.makedirs(directory, exist_ok=True)
        temporary = path + ".part"
        self.run("screendump", filename=os.path.abspath(temporary), format="png")
        # QEMU writes the file itself; wait for it to be complete.
        for _ in range(100):
            if os.path.exists(temporary) and os.path.getsize(temporary) > 0:
                break
            time.sleep(0.05)
        os.replace(temporary, path)

    def plug(self, image):
        """Plugs a raw disk image in as a USB stick on the xHCI controller."""
        blocks = self.run("query-named-block-nodes")
        name = "stick%d" % len(blocks)
        self.run("blockdev-add", driver="raw", **{"node-name": name},
                 file={"driver": "file", "filename": os.path.abspath(image)})
        self.run("device_add", driver="usb-storage", bus="usb.0", drive=name, id=name, removable=True)

    def settle(self, path, limit):
        """Saves the screen once two looks SETTLE_GAP apart see the same pixels."""
        end = time.time() + limit
        before = None
        while True:
            self.shot(path)
            with open(path, "rb") as f:
                now = f.read()
            if now == before or time.time() > end:
                return now == before
            before = now
            time.sleep(SETTLE_GAP)


def main(argv):
    if len(argv) < 3:
        sys.stderr.write(__doc__)
        return 2
    qmp = Qmp(argv[1])
    command = argv[2]
    if command == "keys" and len(argv) == 4:
        qmp.keys(argv[3])
    elif command == "shot" and len(argv) == 4:
        qmp.shot(argv[3])
    elif command == "settle" and len(argv) in (4, 5):
        if not qmp.settle(argv[3], float(argv[4]) if len(argv) == 5 else 30):
            sys.stderr.write("qmp: the screen did not settle\n")
    elif command == "plug" and len(argv) == 4:
        qmp.plug(argv[3])
    elif command == "quit":
        try:
            qmp.run("quit")
        except RuntimeError:
            pass
    else:
        sys.stderr.write(__doc__)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
