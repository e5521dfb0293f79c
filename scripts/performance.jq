# Makes Markdown tables of the results of the two benchmark programs ($parts, $system).

# The result of a benchmark by its name; nothing that failed.
def results: reduce ($parts[0].benchmarks[], $system[0].benchmarks[] | select(.error_occurred | not)) as $one
  ({}; .[$one.name | sub("/iterations:.*"; "")] = $one);
results as $results
| def of($name; $key): $results[$name] // {} | .[$key];

# ---- Numbers: two digits that count, and a unit

def two: if . == 0 then 0 else pow(10; 1 - (fabs | log10 | floor)) as $scale
  | if . >= 100 then round else . * $scale | round / $scale end end;
def or_none(text): if . == null then "not measured" else text end;
def number: or_none("\(two)");
def times: or_none("\(two) ×");
def percent: or_none("\(if . < 0.1 then . * 100 | round / 100 else two end) %");
def megabytes: or_none("\(round) MB");
def time:  # of seconds
  or_none(if . < 1e-6 then "\(. * 1e9 | two) ns" elif . < 1e-3 then "\(. * 1e6 | two) µs"
    elif . < 1 then "\(. * 1e3 | two) ms" else "\(two) s" end);
def scaled(by): if . == null then null else . * by end;
def over($a; $b): if $a == null or $b == null then null else $a / $b end;

def line(cells): "| " + (cells | join(" | ")) + " |";
def table($heads; rows): [line($heads), "|" + ($heads | map("---|") | join(""))] + [rows | line(.)] | join("\n");

# ---- zebd and the bare program

def pair($text; $name; $key; $unit; $reach): [$text,
  (of($name; "zeb_" + $key) | scaled($unit) | time), (of($name; "bare_" + $key) | scaled($unit) | time),
  (of($name; "ratio_" + $key) | times), $reach];
def counts($text; $zeb; $bare; $reach): [$text, ($zeb | number), ($bare | number), "", $reach];
def in_a_row($text; $name): ["an item \($text): the slowest of \(of($name; "items") // 0)",
  (of($name; "zeb_max_us") | scaled(1e-6) | time), (of($name; "bare_max_us") | scaled(1e-6) | time),
  "", ""], ["… as a multiple of what half of them take", (of($name; "zeb_max_to_p50") | times),
  (of($name; "bare_max_to_p50") | times), "", "≤ 5 ×"];

def beside: table(["measure", "`zebd`", "bare", "ratio", "aim"];
  pair("line to file, one pair, on a disk: half within"; "LineToFile/disk"; "p50_us"; 1e-6; "≤ 1.3 ×"),
  pair("… 99 of 100 within"; "LineToFile/disk"; "p99_us"; 1e-6; ""),
  pair("line to file, one pair, in memory: half within"; "LineToFile/memory"; "p50_us"; 1e-6; "≤ 1.3 ×"),
  pair("… 99 of 100 within"; "LineToFile/memory"; "p99_us"; 1e-6; ""),
  pair("20 pairs, all files, on a disk"; "LineToFile/disk_20_pairs"; "p50_us"; 1e-6; ""),
  pair("20 pairs, all files, in memory"; "LineToFile/memory_20_pairs"; "p50_us"; 1e-6; "≤ 1.3 ×"),
  pair("processor time an update, on a disk"; "LineToFile/disk"; "cpu_us"; 1e-6; ""),
  pair("processor time an update, in memory"; "LineToFile/memory"; "cpu_us"; 1e-6; "≤ 1.5 ×"),
  counts("system calls an update"; of("SystemCalls/zeb"; "calls"); of("SystemCalls/bare"; "calls"); "≤ 16"),
  counts("hand-overs to a thread an update"; of("LineToFile/memory"; "zeb_handovers");
    of("LineToFile/memory"; "bare_handovers"); "≤ 1"),
  counts("context switches an update"; of("LineToFile/memory"; "zeb_switches");
    of("LineToFile/memory"; "bare_switches"); ""),
  in_a_row("each 5 ms, on a disk"; "ItemsInARow/disk_5_ms"),
  in_a_row("each 20 ms, on a disk"; "ItemsInARow/disk_20_ms"),
  in_a_row("each 5 ms, in memory"; "ItemsInARow/memory_5_ms"),
  in_a_row("each 20 ms, in memory"; "ItemsInARow/memory_20_ms"),
  in_a_row("0.1 ms after another, in memory"; "ItemsInARow/memory_two_at_once"),
  pair("100 services, one item each, on a disk: all files"; "ItemEach/disk_100"; "all_ms"; 1e-3; ""),
  pair("100 services, in memory"; "ItemEach/memory_100"; "all_ms"; 1e-3; ""),
  pair("1,000 services, one item each, on a disk: all files"; "ItemEach/disk_1000"; "all_ms"; 1e-3; "≤ 1.5 ×"),
  pair("1,000 services, in memory"; "ItemEach/memory_1000"; "all_ms"; 1e-3; "≤ 1.5 ×"),
  counts("threads meanwhile"; [of("ItemEach/disk_1000"; "threads"), of("ItemEach/memory_1000"; "threads")] | max;
    1; "≤ 32"));

def started($text; $name; $reach): [$text, (of($name; "ready_s") | time), $reach,
  (of($name; "core_percent") | percent), (of($name; "resident_MB") | megabytes),
  (of($name; "threads") | number)];
def alone: table(["`zebd` with", "ready after", "aim", "one core, idle", "resident", "threads"];
  started("1 service"; "Start/1"; ""),
  started("1,000 services"; "Start/1000"; "< 0.5 s"),
  started("5,000 services"; "Start/5000"; "< 2.5 s"));
def polled: "1,000 information files on a disk, each in a folder of its own and looked at once a second: "
  + "\(of("PolledFiles/1000"; "core_percent") | percent) of a core (aim: below 3 %).";

# ---- The parts

def processor($name): of($name; "cpu_time") | scaled(1e-9) | time;
def rate($name): of($name; "bytes_per_second") | if . == null then "" else "\(. / 1e9 | two) GB/s" end;
def template($text; $name; $theirs; $reach): [$text, processor($name), rate($name),
  (if $theirs == "" then "" else over(of($name; "cpu_time"); of("Ctemplate/" + $theirs; "cpu_time")) | times end),
  $reach];
def templates: table(["case", "time", "throughput", "against ctemplate", "aim"];
  template("ordinary HTML, a tag every 500 bytes, 50 KB, compiled"; "Compiled/text_ordinary_50K"; "ordinary_50K";
    "≤ 1.2 ×"),
  template("… as a page (sections, in pieces)"; "Compiled/page_ordinary_50K"; "ordinary_50K"; "≤ 1.2 ×"),
  template("… with a refresh header, as outputs do"; "CompiledWithHeader/ordinary_50K"; "ordinary_50K"; ""),
  template("the same, 1 MB"; "Compiled/text_ordinary_1M"; "ordinary_1M"; "≤ 1.2 ×"),
  template("… as a page"; "Compiled/page_ordinary_1M"; "ordinary_1M"; "≤ 1.2 ×"),
  template("… with a refresh header"; "CompiledWithHeader/ordinary_1M"; "ordinary_1M"; ""),
  template("dense page, a tag or section every 100 bytes, 50 KB"; "Compiled/page_dense_50K"; "dense_50K"; ""),
  template("… 1 MB"; "Compiled/page_dense_1M"; "dense_1M"; ""),
  template("compiling the ordinary page, 1 MB"; "Compile/ordinary_1M"; ""; ""),
  template("compiling the dense page, 1 MB"; "Compile/dense_1M"; ""; ""),
  template("short text of an encoder, compiled and expanded"; "Expand/short_text"; ""; ""),
  template("ordinary page, 50 KB, compiled and expanded"; "Expand/ordinary_50K"; ""; ""),
  template("… by the literal algorithm"; "ExpandLiterally/ordinary_50K"; ""; ""),
  template("dense page, 50 KB, compiled and expanded"; "Expand/dense_50K"; ""; ""),
  template("… by the literal algorithm"; "ExpandLiterally/dense_50K"; ""; ""),
  template("a plain copy of 1 MB"; "Copy/ordinary_1M"; ""; ""));

def part($text; $name; $note): [$text, processor($name), $note];
def scan($name): of($name; "ratio") | or_none("\(two) times a bare search for \"=\" in the same bytes");
def records: table(["case", "time", ""];
  part("a message of 5 keys"; "BM_ParseItemMessage/five_keys"; scan("BM_ParseItemMessage/five_keys")),
  part("a message of 20 keys"; "BM_ParseItemMessage/twenty_keys"; scan("BM_ParseItemMessage/twenty_keys")),
  part("a line with a list of 50 items"; "BM_BulkLine"; scan("BM_BulkLine")),
  part("`Copy`"; "BM_ItemCopy"; "a pointer; the fields are shared until written"),
  part("`Copy`, then a write"; "BM_ItemCopyAndEdit"; ""),
  part("`IsSame`, equal records that share nothing"; "BM_ItemIsSameEqual"; ""));

# ---- The page

def share($label): $label // "" | if . == "" then "not counted" else . end;
$system[0].context as $machine
| "One run of \($machine.date[:10]) on \($machine.num_cpus) cores of \($machine.mhz_per_cpu) MHz; "
+ "load at its beginning \($machine.load_avg | map("\(two)") | join(", ")).\n\n"
+ "## The whole road, beside a bare program\n\n" + beside
+ "\n\nThe system calls of an update: \(share(of("SystemCalls/zeb"; "label"))).\n"
+ "Those of the bare program: \(share(of("SystemCalls/bare"; "label"))).\n\n"
+ "## Many services\n\n" + alone + "\n\n" + polled
+ "\n\n## Templates\n\n" + templates
+ "\n\n## Item messages and records\n\n" + records
