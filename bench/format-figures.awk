#!/usr/bin/awk -f
# Turns the raw lines of the benchmarks into the Markdown table of docs/benchmarks.md:
#   format-figures.awk WHEEL_LINES DESKTOP_WITH_ACCESS DESKTOP_WITHOUT_ACCESS STATS_LINES
# Every latency goes with its ratio to the floor of the same run; each figure that has a goal
# says whether it met it. A figure a run did not produce shows as "missing".

# "wheel: LABEL devices=D key=value ..." into wheel[LABEL "/" D, key].
/^wheel: / {
    key = $2 "/" ($3 ~ /^devices=/ ? substr($3, 9) : "1")
    seen[key] = 1
    for (i = 3; i <= NF; ++i) {
        split($i, pair, "=")
        if ($i ~ /^error=/) {
            wheel[key, "error"] = substr($0, index($0, "error=") + 6)
            break
        }
        wheel[key, pair[1]] = pair[2]
    }
    next
}
# The desktop figures, by run: "access" and "none".
FNR == 1 && FILENAME == ARGV[2] { run = "access" }
FNR == 1 && FILENAME == ARGV[3] { run = "none" }
/^start to tray icon: [0-9]+ ms$/ { desktop[run, "start"] = $5 }
/^resident memory after start:/ { desktop[run, "rss"] = $5 }
/^menu closed, 10 s:/ { desktop[run, "closed"] = $5 }
/^menu open, 10 s:/ { desktop[run, "cpu"] = $5; desktop[run, "open"] = $12 }
/^stats: / { split($3, pair, "="); stats[$2] = pair[2] }

function has(key, field) { return (key, field) in wheel && wheel[key, field] != "" }
function value(key, field) { return has(key, field) ? wheel[key, field] : "missing" }
function yesno(ok) { return ok ? "yes" : "**no**" }
function row(figure, shown, ratio, goal, met) {
    printf "| %s | %s | %s | %s | %s |\n", figure, shown, ratio, goal, met
}
# A path with a goal for its median is held to 1.2 × the floor at p99.
function latency(key, name, goal, met,    tail) {
    if ((key, "error") in wheel) {
        row(name, "failed: " wheel[key, "error"], "", goal, goal == "" ? "" : "**no**")
        return
    }
    row(name ", median", value(key, "median_us") " µs", value(key, "median_x"), goal, met)
    tail = value(key, "p99_x")
    row(name ", p99", value(key, "p99_us") " µs", tail, goal == "" ? "" : "at most 1.2 × floor",
        goal == "" ? "" : tail == "missing" ? "**no**" : yesno(tail + 0 <= 1.2))
}
function desktopRows(r, how,    shown, met) {
    shown = "missing"; met = "**no**"
    if ((r, "closed") in desktop) { shown = desktop[r, "closed"]; met = yesno(desktop[r, "closed"] == "0") }
    row("3. Voluntary context switches over 10 s, menu closed, " how, shown, "", "0", met)
    shown = "missing"; met = "**no**"
    if ((r, "rss") in desktop) { shown = sprintf("%.1f MB", desktop[r, "rss"]); met = yesno(desktop[r, "rss"] + 0 < 30) }
    row("3. Resident memory after start, " how, shown, "", "under 30 MB", met)
    shown = "missing"; met = "**no**"
    if ((r, "start") in desktop) { shown = desktop[r, "start"] " ms"; met = yesno(desktop[r, "start"] + 0 < 150) }
    row("3. Process start to tray icon shown, " how, shown, "", "under 150 ms", met)
    shown = "missing"; met = "**no**"
    if ((r, "cpu") in desktop) {
        shown = desktop[r, "cpu"] " % of one core (" desktop[r, "open"] " wake-ups)"
        met = yesno(desktop[r, "cpu"] + 0 < 0.5)
    }
    row("3. Processor use over 10 s, menu open, " how, shown, "", "under 0.5 %", met)
}
function lost(key) {
    return has(key, "sent") && (wheel[key, "arrived"] != wheel[key, "sent"] || wheel[key, "wrong"] > 0)
}

END {
    # Tolvane's input layer on a plain poll loop, as the input service runs it on its own.
    layer = "tolvane/1"; floor = "floor/1"; peer = "interception-tools/1"
    print "| Figure | Value | Ratio to the floor | Goal | Met |"
    print "|---|---|---|---|---|"

    latency(floor, "1. Wheel latency, floor (bare pass-through, `bench/wheel/wheel-floor.c`)", "", "")
    ratio = value(layer, "median_x")
    latency(layer, "1. Wheel latency, Tolvane's input layer (as the input service runs it)",
            "at most 1.1 × floor", ratio == "missing" ? "**no**" : yesno(ratio + 0 <= 1.1))
    # The same with Debian's udevd running, each against the floor measured beside it.
    latency("floor-udevd/1", "1. Wheel latency with udevd, floor", "", "")
    udevdRatio = value("tolvane-udevd/1", "median_x")
    latency("tolvane-udevd/1", "1. Wheel latency with udevd, Tolvane's input layer",
            "at most 1.1 × floor", udevdRatio == "missing" ? "**no**" : yesno(udevdRatio + 0 <= 1.1))
    latency(peer, "1. Wheel latency, interception-tools (`interception -g` \\| negating filter \\| `uinput -d`)", "", "")
    if (has(layer, "median_us") && has(peer, "median_us"))
        row("1. Tolvane's median against interception-tools'",
            wheel[layer, "median_us"] " µs against " wheel[peer, "median_us"] " µs",
            wheel[layer, "median_x"] " against " wheel[peer, "median_x"], "below interception-tools",
            yesno(wheel[layer, "median_us"] + 0 < wheel[peer, "median_us"] + 0))
    for (k in seen)
        if (lost(k))
            row("1. Frames lost or wrong, " k, (wheel[k, "sent"] - wheel[k, "arrived"]) " of " wheel[k, "sent"], "", "none", "**no**")

    split(floor " " layer " " peer, paths, " ")
    split("floor|Tolvane's input layer|interception-tools", names, "|")
    for (i = 1; i <= 3; ++i) {
        ratio = ""
        if (has(paths[i], "cpu_us") && has(floor, "cpu_us"))
            ratio = sprintf("%.2f", wheel[paths[i], "cpu_us"] / wheel[floor, "cpu_us"])
        row("1. Processor time per frame, " names[i] " (median, all its processes)",
            value(paths[i], "cpu_us") " µs", ratio, "", "")
    }
    split("1 8 32", mice, " ")
    for (i = 1; i <= 3; ++i) {
        key = "tolvane/" mice[i]
        growth = -1
        if (has(key, "median_us") && has(layer, "median_us"))
            growth = wheel[key, "median_us"] / wheel[layer, "median_us"]
        goal = ""; met = ""
        if (i > 1) { goal = "flat: within 1.1 × one mouse"; met = growth < 0 ? "**no**" : yesno(growth <= 1.1) }
        shown = value(key, "median_us") " µs (" sprintf("%.2f", growth) " × one mouse)"
        if ((key, "error") in wheel)
            shown = "failed: " wheel[key, "error"]
        row("2. Wheel latency with " mice[i] (i == 1 ? " mouse" : " mice") " held (Tolvane's input layer), median",
            shown, value(key, "median_x"), goal, met)
    }
    for (i = 1; i <= 3; ++i) {
        key = "tolvane/" mice[i]
        row("2. Start of Tolvane's input layer to " (i == 1 ? "its one mouse" : "all " mice[i] " mice") " taken", value(key, "start_ms") " ms", "", "", "")
    }

    for (i = 1; i <= 3; ++i) {
        goal = ""; met = ""
        if (i > 1) { goal = "0"; met = has(paths[i], "idle_wakeups") ? yesno(wheel[paths[i], "idle_wakeups"] == 0) : "**no**" }
        row("3. Wake-ups over 10 s idle with the mouse held, " names[i] " (test kernel)",
            value(paths[i], "idle_wakeups"), "", goal, met)
    }

    runs["access"] = "with the input service answering (uinput, no device)"
    runs["none"] = "without the input service (as this machine is)"
    split("access none", order, " ")
    for (i = 1; i <= 2; ++i)
        desktopRows(order[i], runs[order[i]])

    shown = "missing"; met = "**no**"
    if ("sample" in stats) { shown = stats["sample"] " µs"; met = yesno(stats["sample"] + 0 < 1000) }
    row("4. One statistics sample (processor, memory, storage), 10,000 in a loop", shown, "", "under 1 ms", met)
    row("4. of which the processor reading (`/proc/stat`)", stats["cpu_ticks"] " µs", "", "", "")
    row("4. of which the memory reading (`/proc/meminfo`)", stats["memory_used"] " µs", "", "", "")
    row("4. of which the storage reading (`statvfs /`)", stats["root_volume"] " µs", "", "", "")
}
