"""The sections of bench/messen."""

import http.client
import json
import multiprocessing
import os
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

import fahrtwelt
from fahrtwelt import BIN, QUELLE, Fahrt, rechenzeit, speicher, warte_bis, wartungen, weckungen

# What someone without the program would leave running: is the phone there, does its app answer, which address does the
# world see, is the proxy still set.
SCHLEIFE = """
while :; do
    "$ADB" devices -l
    curl -s -m 3 -d '{"id": "schleife", "name": "Schleife", "vpn": []}' http://127.0.0.1:8080/api/kabel
    curl -s -m 10 --socks5-hostname 127.0.0.1:1080 http://austritt.probe/
    "$MAC/usr/sbin/networksetup" -getsocksfirewallproxy Wi-Fi
    sleep 3
done
"""


def tabelle(kopf, *zeilen):
    print("|" + "|".join(f" {k} " for k in kopf) + "|")
    print("|" + "---|" * len(kopf))
    for zeile in zeilen:
        print("|" + "|".join(f" {z} " for z in zeile) + "|")
    print(flush=True)


verfehlt = []


def ziel(was, wert, hoechstens, einheit=""):
    """A goal and whether it is reached."""
    if wert > hoechstens:
        verfehlt.append(was)
    print(f"Goal, {was}: {wert:.3g}{einheit}, at most {hoechstens:.3g}{einheit}: {'reached' if wert <= hoechstens else 'MISSED'}\n",
          flush=True)


def spanne(werte, einheit="", stellen=1):
    """Median, and between what it lay."""
    mitte, *grenzen = (f"{w:.{stellen}f}" for w in (statistics.median(werte), min(werte), max(werte)))
    return f"{mitte}{einheit} ({grenzen[0]}–{grenzen[1]})"


def in_eigenem_netz(arbeit, auftraege):
    """Several trips at once where each can have its own loopback: they mostly wait."""

    def allein(auftrag, rohr):
        signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
        signal.signal(signal.SIGINT, signal.SIG_IGN)  # one signal that ends it is enough: the one below
        fahrtwelt.eigenes_netz()
        rohr.send(arbeit(auftrag))

    probe = multiprocessing.Process(target=lambda: sys.exit(not fahrtwelt.eigenes_netz()))
    probe.start()
    probe.join()
    zugleich = len(auftraege) if probe.exitcode == 0 else 1
    ergebnisse = []
    while auftraege:
        gruppe, auftraege, laeufe = auftraege[:zugleich], auftraege[zugleich:], []
        try:
            for auftrag in gruppe:
                empfang, sendung = multiprocessing.Pipe(duplex=False)
                laeufe.append((multiprocessing.Process(target=allein, args=(auftrag, sendung)), empfang))
                laeufe[-1][0].start()
                sendung.close()
            ergebnisse += [empfang.recv() for _, empfang in laeufe]
        except EOFError:
            sys.exit("messen: eine Fahrt ist gescheitert, siehe oben")
        finally:
            for prozess, _ in laeufe:
                prozess.terminate()
            for prozess, _ in laeufe:
                prozess.join()
    return ergebnisse


def miss_schleife(fahrt, sekunden):
    schleife = subprocess.Popen(["/bin/sh", "-c", SCHLEIFE], stdout=subprocess.DEVNULL, start_new_session=True,
                                env=fahrt.umgebung | {"ADB": str(fahrt.adb), "MAC": str(fahrt.mac)})
    try:
        time.sleep(5)
        vorher = rechenzeit(schleife.pid)
        time.sleep(sekunden)
        return 1000 * (sum(rechenzeit(schleife.pid)) - sum(vorher)) / sekunden
    finally:
        os.killpg(schleife.pid, signal.SIGKILL)
        schleife.wait()


def frage(sekunden):
    """Five times a second, evenly."""
    anfang = time.monotonic()
    for nummer in range(5 * sekunden):
        time.sleep(max(0.0, anfang + nummer / 5 - time.monotonic()))
        anfrage = http.client.HTTPConnection("127.0.0.1", 1081)
        anfrage.request("GET", "/stand")
        anfrage.getresponse().read()
        anfrage.close()
    time.sleep(max(0.0, anfang + sekunden - time.monotonic()))


def miss_takt(_):
    """In turns, so that what else happens on the machine meets both alike. Milliseconds of processor per second."""
    sekunden, e = 60, {n: [] for n in ("eigene", "werkzeuge", "schleife", "fahrt", "fahrt_alle", "ruhe", "ruhe_alle",
                                       "fragen", "fragen_alle")}
    with Fahrt("--stecken", "--erlaubt") as fahrt:
        for _ in range(3):
            fahrt.starte()
            warte_bis(fahrt.faehrt)
            time.sleep(10)  # the surveys of the first ticks; a minute then holds two more of the rarest
            nummer = fahrt.programm.pid
            wartezahl, vorher = wartungen(nummer), rechenzeit(nummer)
            time.sleep(sekunden)
            eigene, werkzeuge = (n - v for n, v in zip(rechenzeit(nummer), vorher))
            e["fahrt_alle"].append((wartungen(nummer) - wartezahl) / sekunden)
            e["eigene"].append(1000 * eigene / sekunden)
            e["werkzeuge"].append(1000 * werkzeuge / sekunden)
            e["fahrt"].append(weckungen(nummer, 24))
            fahrt.toete()  # leaves the forwards to the loop
            e["schleife"].append(miss_schleife(fahrt, sekunden))
        fahrt.starte()
        warte_bis(fahrt.faehrt)
        fahrt.sage("ziehen")
        warte_bis(fahrt.proxy_aus)
        time.sleep(5)
        nummer = fahrt.programm.pid
        for _ in range(3):
            e["ruhe"].append(weckungen(nummer, 24))
            e["fragen"].append(weckungen(nummer, 24, frage))
            for was, wohin in ((time.sleep, "ruhe_alle"), (frage, "fragen_alle")):
                vorher = wartungen(nummer)
                was(24)
                e[wohin].append((wartungen(nummer) - vorher) / 24)
    return e


def takt():
    print("## A tick in „Fährt mit“\n")
    e = in_eigenem_netz(miss_takt, [0])[0]
    anteil = [100 * a / b for a, b in zip(e["eigene"], e["schleife"])]
    tabelle(["per second", "median (from–to)"],
            ["processor time of the program itself", spanne(e["eigene"], " ms", 2)],
            ["processor time of the tools that it runs", spanne(e["werkzeuge"], " ms", 2)],
            ["processor time of a shell loop with the same questions, all in all", spanne(e["schleife"], " ms", 2)],
            ["the program's own share of that", spanne(anteil, " %")],
            ["wake-ups from sleep in „Fährt mit“", spanne(e["fahrt"], "", 2)],
            ["wake-ups from sleep without a cable", spanne(e["ruhe"], "", 2)],
            ["the same, with five requests answered", spanne(e["fragen"], "", 2)],
            ["waits of any length in „Fährt mit“, those for tools and locks included", spanne(e["fahrt_alle"], "", 2)],
            ["waits of any length without a cable", spanne(e["ruhe_alle"], "", 2)],
            ["the same, with five requests answered", spanne(e["fragen_alle"], "", 2)])
    print("The two clocks (tick, display) alone wake it 0.58 times a second. A sleep is a wait of 50 ms and more.\n")
    ziel("the program's own share of the loop", statistics.median(anteil), 10, " %")
    # The two clocks fire 14 times in the 24 s that are looked at, or once more.
    ziel("wake-ups a second without a cable", statistics.median(e["ruhe"]), 15 / 24)
    ziel("wake-ups a second in „Fährt mit“", statistics.median(e["fahrt"]), 15 / 24)
    ziel("wake-ups a second with five requests", statistics.median(e["fragen"]), 15 / 24 + 5)


def miss_reaktion(anzahl):
    ergebnis = {"stecken": [], "ziehen": [], "erlauben": []}
    with Fahrt("--erlaubt") as fahrt:

        def reagiere(was, bis):
            time.sleep(random.uniform(0, 3))  # anywhere between two ticks
            anfang = time.monotonic()
            fahrt.sage(was)
            warte_bis(bis)
            ergebnis[was].append(time.monotonic() - anfang)

        fahrt.starte()
        warte_bis(lambda: fahrt.phase().startswith("Kein Handy"))
        for _ in range(anzahl):
            reagiere("stecken", fahrt.faehrt)
            reagiere("ziehen", fahrt.proxy_aus)
            fahrt.sage("vergessen")
            fahrt.sage("stecken")
            warte_bis(lambda: fahrt.phase().startswith("Warte auf das Ja"))
            reagiere("erlauben", fahrt.faehrt)
            fahrt.sage("ziehen")
            warte_bis(lambda: fahrt.phase().startswith("Kein Handy"))
    return ergebnis


def reaktion():
    print("## Reaction, 50 times at random moments between two ticks\n")
    teile = in_eigenem_netz(miss_reaktion, [10] * 5)
    zeilen = []
    for was, text in (("stecken", "cable in → „Fährt mit“"), ("ziehen", "cable out → proxy off"),
                      ("erlauben", "yes on the phone → „Fährt mit“")):
        werte = sorted(w for teil in teile for w in teil[was])
        zeilen.append([text, f"{statistics.median(werte):.2f} s", f"{werte[-1]:.2f} s", len(werte)])
    tabelle(["", "median", "worst", "times"], *zeilen)
    print("A clock of 3 seconds alone makes 1.5 s and 3 s of it.\n")


def miss_speicher(fenster):
    """Start-up times, and the memory at the beginning, at its highest and at the end of the load."""
    with Fahrt("--stecken", "--erlaubt") as fahrt:
        starts = []
        for _ in range(20):
            starts.append(fahrt.starte(fenster))
            fahrt.toete()
        fahrt.starte(fenster)
        warte_bis(fahrt.faehrt)
        time.sleep(10)
        verlauf, weg = [speicher(fahrt.programm.pid)], False
        schluss = time.monotonic() + float(os.environ.get("MINUTEN", "3")) * 60
        naechste = time.monotonic() + 60
        while time.monotonic() < schluss:
            # Somebody who asks ten times a second, and a phone whose numbers never rest; off the cable now and then.
            subprocess.run(["curl", "-s", "-m", "3", "http://127.0.0.1:1081/stand"], stdout=subprocess.DEVNULL, check=False)
            time.sleep(0.1)
            if time.monotonic() > naechste:
                naechste += 60
                verlauf.append(speicher(fahrt.programm.pid))
                fahrt.sage("rtt", "wlan", str(random.randint(5, 500)))
                fahrt.sage("funkloch", str(random.randint(1, 90)), "1")
                if random.random() < 0.2:
                    weg = not weg
                    fahrt.sage("ziehen" if weg else "stecken")
        verlauf.append(speicher(fahrt.programm.pid))
    return starts, verlauf[0], max(verlauf), verlauf[-1]


def programmspeicher():
    print("## Memory and size\n")
    formen = {"in the terminal": (False, 12), "in the menu bar (Qt, without a screen)": (True, 60)}
    zeilen, ziele = [], []
    for (name, (_, grenze)), (starts, *mengen) in zip(
            formen.items(), in_eigenem_netz(miss_speicher, [fenster for fenster, _ in formen.values()])):
        zeilen.append([name, *(f"{rss:.1f} MB, private {privat:.1f}" for rss, privat in mengen),
                       spanne([1000 * s for s in starts], " ms", 0)])
        ziele.append((f"resident {name}", mengen[1][0], grenze, " MB"))
        ziele.append((f"growth {name}", mengen[2][0] - mengen[0][0], 1, " MB"))
    tabelle(["", "after ten seconds of „Fährt mit“", "at its highest",
             f"after {os.environ.get('MINUTEN', '3')} minutes with nearly ten requests a second",
             "start to first tick written, 20 times"], *zeilen)
    for name in ("mobilsteg-bordlotse", "mobilsteg-bordlotse-fenster"):
        with tempfile.NamedTemporaryFile() as nackt:
            subprocess.run(["strip", "-o", nackt.name, BIN / name], check=True)
            print(f"`{name}`: {os.path.getsize(BIN / name) / 1e6:.1f} MB, "
                  f"stripped {os.path.getsize(nackt.name) / 1e6:.1f} MB\n", flush=True)
    for eines in ziele:
        ziel(*eines)


def standdienst():
    print("## Status service beside nginx\n", flush=True)
    lauf = subprocess.Popen([QUELLE / "bench/standdienst"], preexec_fn=fahrtwelt.eigenes_netz)
    try:
        status = lauf.wait()
    finally:
        lauf.terminate()  # it cleans up after itself
        lauf.wait()
    if status > 1:
        sys.exit(status)
    verfehlt.extend(["level with nginx"] * status)


def teile():
    print("## Parsers and panel\n")
    subprocess.run(["cmake", "--build", "--preset", "release", "--target", "mobilsteg-messungen"], check=True,
                   stdout=subprocess.DEVNULL)
    daten = json.loads(subprocess.run([BIN / "mobilsteg-messungen", "--benchmark_format=json",
                                       "--benchmark_repetitions=5", "--benchmark_report_aggregates_only=true"],
                                      check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout)
    reihen = {}
    for lauf in daten["benchmarks"]:
        name, _, groesse = lauf["run_name"].replace("/process_time", "").partition("/")
        reihen.setdefault(name, {}).setdefault(int(groesse or 1), {})[lauf["aggregate_name"]] = lauf["cpu_time"]
    zeilen, steilstes = [], 0
    for name, reihe in reihen.items():
        groessen, zeiten = list(reihe), [werte["median"] for werte in reihe.values()]
        anstieg = ""
        if len(reihe) > 1:
            je_stueck = zeiten[-1] / zeiten[-2] * groessen[-2] / groessen[-1]
            steilstes, anstieg = max(steilstes, je_stueck), f"{je_stueck:.2f}"
        zeilen.append([f"`{name}`", " · ".join(f"{g:,}" for g in groessen), " · ".join(f"{z:,.1f}" for z in zeiten) + " µs",
                       f"± {100 * max(werte['cv'] for werte in reihe.values()):.0f} %", anstieg])
    tabelle(["", "input", "processor time", "noise at most", "growth at the end: 1 is linear"], *zeilen)
    ziel("growth beside the input's", steilstes, 1.3)


def bau():
    """Clean, after one header that many include, and the suite. Once: nobody waits for five clean builds."""
    print("## Build and tests\n")
    ordner = QUELLE / "bau/messung"
    shutil.rmtree(ordner, ignore_errors=True)

    def dauer(*worte):
        anfang = time.monotonic()
        subprocess.run(worte, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return f"{time.monotonic() - anfang:.0f} s"

    neu = dauer("sh", "-c", f"cmake -S '{QUELLE}' -B '{ordner}' -G Ninja -DCMAKE_BUILD_TYPE=Release && cmake --build '{ordner}'")
    zeilen = [["everything from nothing, tests included", neu]]
    for kopf in ("kabel/Stand.hpp", "plattform/Text.hpp"):
        (QUELLE / kopf).touch()
        zeilen.append([f"after touching `{kopf}`", dauer("cmake", "--build", str(ordner))])
    zugleich = str(2 * os.cpu_count())
    zeilen.append(["all tests", dauer("ctest", "--test-dir", str(ordner), "-j", zugleich)])
    shutil.rmtree(ordner)
    tabelle(["", f"{os.cpu_count()} cores, once"], *zeilen)


ABSCHNITTE = {"takt": takt, "reaktion": reaktion, "standdienst": standdienst, "speicher": programmspeicher, "teile": teile,
              "bau": bau}

if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    print(f"# Measurements\n\n`bench/messen{''.join(' ' + w for w in sys.argv[1:])}`, {os.cpu_count()} cores, load at the "
          f"start {os.getloadavg()[0]:.2f}\n", flush=True)
    try:
        for abschnitt in sys.argv[1:] or ABSCHNITTE:
            ABSCHNITTE[abschnitt]()
    except KeyboardInterrupt:
        sys.exit(130)
    if verfehlt:
        sys.exit("messen: verfehlt: " + "; ".join(verfehlt))
