#!/usr/bin/env python3
"""Our server and Icecast, side by side on one 160 kbit/s Ogg Vorbis stream.

    bench.py BIN [LISTENERS...]      BIN holds serve and listen; 100 and 1000 listeners unless told

Needs icecast2, oggenc, ffmpeg. One feeder paces the same pages to both servers in real time; each server in turn
gets the listeners for SECONDS (30). CPU is the kernel's count for the server's process, while they
connect and over that time; memory is its resident set (and its own, private part of it) at the end.
"""
import os, pwd, resource, shutil, socket, struct, subprocess, sys, tempfile, threading, time

SECONDS = int(os.environ.get("SECONDS", "30"))
ICECAST = """<icecast><limits><clients>4000</clients><sources>2</sources><queue-size>524288</queue-size>
<burst-on-connect>1</burst-on-connect><burst-size>40000</burst-size></limits>
<authentication><source-password>x</source-password><admin-user>a</admin-user><admin-password>x</admin-password>
</authentication><hostname>localhost</hostname><listen-socket><port>%d</port></listen-socket><fileserve>0</fileserve>
<paths><logdir>%s</logdir><webroot>/usr/share/icecast2/web</webroot><adminroot>/usr/share/icecast2/admin</adminroot>
</paths><logging><accesslog>access.log</accesslog><errorlog>error.log</errorlog><loglevel>2</loglevel></logging>
<security><chroot>0</chroot></security></icecast>"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def pages(stream):
    """The stream's pages, each with the second at which its sound ends."""
    at = 0
    while at < len(stream):
        segments = stream[at + 26]
        size = 27 + segments + sum(stream[at + 27:at + 27 + segments])
        yield struct.unpack_from("<q", stream, at + 6)[0] / 44100, stream[at:at + size]
        at += size


def feed(stream, sinks):
    start = time.monotonic()
    for due, page in pages(stream):
        time.sleep(max(0, start + due - time.monotonic()))
        for sink in sinks:
            sink(page)


def cpu(pid):
    with open(f"/proc/{pid}/stat") as stat:
        user, system = stat.read().rsplit(") ", 1)[1].split()[11:13]
    return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")


def memory(pid):
    found = {}
    with open(f"/proc/{pid}/smaps_rollup") as rollup:
        for line in rollup.readlines()[1:]:
            name, value = line.split()[:2]
            found[name.rstrip(":")] = int(value) / 1024
    return found["Rss"], found["Private_Clean"] + found["Private_Dirty"]


def main():
    binaries, counts = sys.argv[1], [int(n) for n in sys.argv[2:]] or [100, 1000]
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, 8192), hard))
    scratch = tempfile.mkdtemp()
    os.chmod(scratch, 0o777)
    ogg = f"{scratch}/stream.ogg"
    length = sum(2 * (SECONDS + 5 + count / 100) for count in counts) + 30
    subprocess.run(f"ffmpeg -v error -f lavfi -i 'aevalsrc=0.3*sin(2*PI*(200+5*t)*t)+0.1*random(0)|0.3*sin(2*PI*440*t)"
                   f":s=44100:d={length}' -f s16le - | oggenc -Q -r -R 44100 -M 160 -m 160 -o {ogg} -",
                   shell=True, check=True)
    port = free_port()
    with open(f"{scratch}/icecast.xml", "w") as config:
        config.write(ICECAST % (port, scratch))
    user = pwd.getpwnam("nobody").pw_uid if os.getuid() == 0 else None
    icecast = subprocess.Popen(["icecast2", "-c", f"{scratch}/icecast.xml"], user=user,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    ours = subprocess.Popen([f"{binaries}/serve"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    try:
        our_port = int(ours.stdout.readline())
        time.sleep(2)
        source = socket.create_connection(("127.0.0.1", port))
        source.sendall(b"SOURCE /s.ogg HTTP/1.0\r\nAuthorization: Basic c291cmNlOng=\r\n"
                       b"Content-Type: application/ogg\r\n\r\n")

        def to_ours(page):
            ours.stdin.write(page)
            ours.stdin.flush()
        with open(ogg, "rb") as stream:
            threading.Thread(target=feed, args=(stream.read(), [source.sendall, to_ours]), daemon=True).start()
        time.sleep(5)
        print(f"{'server':8} {'listeners':>9} {'connect s':>9} {'cpu s':>7} {'rss MB':>7} {'own MB':>7}  listeners' side")
        for count in counts:
            for name, process, where, path in (("ours", ours, our_port, "/"), ("icecast", icecast, port, "/s.ogg")):
                start = cpu(process.pid)
                client = subprocess.Popen([f"{binaries}/listen", str(where), path, str(count), str(SECONDS)],
                                          stdout=subprocess.PIPE, text=True)
                client.stdout.readline()
                connected = cpu(process.pid)
                time.sleep(SECONDS - 1)
                resident, own = memory(process.pid)
                heard = client.communicate()[0].strip()
                print(f"{name:8} {count:9} {connected - start:9.2f} {cpu(process.pid) - connected:7.2f} "
                      f"{resident:7.1f} {own:7.1f}  {heard}", flush=True)
                time.sleep(3)
    finally:
        for process in (ours, icecast):
            process.kill()
            process.wait()
        if "KEEP" not in os.environ:
            shutil.rmtree(scratch, ignore_errors=True)


main()
