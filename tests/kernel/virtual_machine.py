"""Runs jobs on a real kernel: an emulated AArch64 machine with Debian's kernel and the module.

A job is a shell script, which runs as root. The machine sends back the files that its jobs leave.
"""

import io
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tarfile
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))

from elf import Elf  # noqa: E402

GUEST = pathlib.Path(__file__).parent / "guest"
MODULES = ("virtio_mmio", "virtio_console", "i2c-dev", "i2c-mux", "i2c-mux-pca954x", "at24")
PROGRAMS = ("usr/bin/dbus-daemon", "usr/bin/dbus-send", "usr/sbin/i2cdetect", "usr/sbin/i2cdump",
            "usr/sbin/i2cget", "usr/sbin/i2cset", "usr/sbin/i2ctransfer")
BENCHMARK_PROGRAMS = ("usr/bin/busctl",) # only where its package is unpacked
LIBRARIES = tuple(f"{place}lib/aarch64-linux-gnu{part}" for part in ("", "/systemd") for place in ("", "usr/"))
LOADER = "lib/ld-linux-aarch64.so.1"
RESULT = "RESULT: all jobs ran"

# What the kernel says when something is wrong in it. The out-of-tree module taints the kernel.
COMPLAINT = re.compile(
    r"WARNING:|BUG|Oops|Kernel panic|Unable to handle|Internal error|refcount_t|lockdep"
    r"|possible (?:recursive|circular)|INFO: task|self-detected stall|detected stalls|Call trace"
    r"|scheduling while atomic|use-after-free|KFENCE|Object (?:already|padding)|Redzone|Poison"
    r"|unregister_netdevice|did not release|is not available|Segmentation fault|segfault"
)

# The slab allocator finds memory of kmalloc() that is used after its end, or beyond it. The module has no
# cache of its own. A kernel at a random address has page tables of its own, and each system call switches
# to them, which takes a fifth of the emulator's time.
KERNEL_OPTIONS = ("console=ttyAMA0 rdinit=/init ignore_loglevel panic=-1 oops=panic printk.devkmsg=on"
                  " slub_debug=FZPU,kmalloc-* nokaslr norandmaps nowatchdog"
                  " rcupdate.rcu_cpu_stall_suppress=1")


class Failure(Exception):
    """The machine did not run its jobs, or its kernel complained."""


class Parts:
    """What the machine is made of: Debian's packages, the module, the stand-in, the tool."""

    def __init__(self, prepared, standin, tool):
        self.debian = prepared / "debian"
        self.module = prepared / "module/zolt_bus.ko"
        self.probes = prepared / "probes"
        self.standin = standin
        self.tool = tool

    def kernel(self):
        return only(self.debian.glob("boot/vmlinuz-*"))

    def kernel_module(self, name):
        return only(self.debian.glob(f"lib/modules/*/kernel/**/{name}.ko"))

    def library(self, name):
        for directory in LIBRARIES:
            path = self.debian / directory / name
            if path.exists():
                return path
        raise Failure(f"no package has the library {name}")


def only(paths):
    paths = list(paths)
    if len(paths) != 1:
        raise Failure(f"one file was expected, not {paths}")
    return paths[0]


def put(root, place, *files):
    (root / place).mkdir(parents=True, exist_ok=True)
    for file in files:
        shutil.copy(file, root / place)


def put_libraries(parts, root):
    """Copies the libraries that the programs need, and those that these need."""
    programs = [path for place in ("usr/bin", "standin") for path in (root / place).iterdir()]
    wanted = {name for program in programs if program.is_file() for name in Elf(program).needed()}
    own = {path.name for path in (root / "standin/lib").iterdir()}
    put(root, "lib", parts.debian / LOADER)
    seen = {pathlib.Path(LOADER).name}
    while wanted := wanted - own - seen:
        name = wanted.pop()
        seen.add(name)
        library = parts.library(name)
        put(root, "usr/lib/aarch64-linux-gnu", library)
        wanted |= set(Elf(library).needed())


def build_root(parts, jobs, root):
    """Fills a directory with the files of the machine."""
    put(root, "", GUEST / "init")
    (root / "init").chmod(0o755)
    put(root, "bin", parts.debian / "bin/busybox")
    modules = [*(parts.kernel_module(name) for name in MODULES), parts.module]
    put(root, "modules", *modules)
    (root / "modules/order").write_text("".join(f"{module.name}\n" for module in modules))
    put(root, "usr/bin", parts.tool, *(parts.debian / name for name in PROGRAMS),
        *parts.probes.iterdir())
    put(root, "usr/bin", *(path for name in BENCHMARK_PROGRAMS if (path := parts.debian / name).exists()))
    put(root, "standin", parts.standin / "standin/zolt_sim")
    put(root, "standin/lib", *(parts.standin / "standin/lib").glob("lib*.so.1"))
    put(root, "standin/i2c_bus", parts.standin / "standin/i2c_bus/libzolt_sim_i2c.so")
    put(root, "boards", *(parts.standin / "boards").glob("*.toml"))
    put_libraries(parts, root)
    for name in ("dev", "etc", "proc", "sys", "tmp"):
        (root / name).mkdir(exist_ok=True)
    (root / "etc/passwd").write_text("root::0:0::/:/bin/sh\nnobody::65534:65534::/:/bin/sh\n")
    for name, files in jobs.items():
        place = root / "jobs" / name
        place.mkdir(parents=True)
        for file, content in files.items():
            (place / file).write_bytes(content)


def pack(root, archive):
    names = "\n".join(str(path.relative_to(root)) for path in sorted(root.rglob("*")))
    with archive.open("wb") as packed:
        subprocess.run(["cpio", "--quiet", "-o", "-H", "newc", "-R", "0:0"], cwd=root, check=True,
                       input=names.encode(), stdout=packed)


def command(kernel, archive, results, processors, counts_instructions):
    pace = ["-accel", f"tcg,thread={'multi' if processors > 1 else 'single'}", "-smp", str(processors)]
    if counts_instructions: # which the one processor runs in step with the count
        pace += ["-icount", "shift=0,sleep=off"]
    return ["qemu-system-aarch64", "-machine", "virt", "-cpu", "cortex-a57",
            *pace, "-m", "1024",
            "-nodefaults", "-nographic", "-no-reboot", "-serial", "stdio",
            "-kernel", str(kernel), "-initrd", str(archive), "-append", KERNEL_OPTIONS,
            "-device", "virtio-serial-device", "-chardev", f"file,id=results,path={results}",
            "-device", "virtserialport,chardev=results,name=results"]


def complaints(log):
    return [line for line in log.splitlines() if COMPLAINT.search(line)]


def check_log(log):
    """Raises Failure unless the log is that of a run without a complaint."""
    found = complaints(log)
    if found:
        raise Failure("\n".join(["the kernel complains:", *found]))
    if len(re.findall(rf"{RESULT}$", log, re.MULTILINE)) != 1:
        raise Failure("\n".join(["the result line is missing; the log ends:",
                                 *log.splitlines()[-20:]]))


def lines_of(log_file):
    return log_file.read_bytes().decode(errors="replace").splitlines()


def unpacked(results):
    """Returns the files of the results by their name."""
    try:
        with tarfile.open(fileobj=io.BytesIO(results.read_bytes())) as archive:
            return {
                member.name.removeprefix("./"): archive.extractfile(member).read()
                for member in archive if member.isfile()
            }
    except (OSError, tarfile.TarError) as error:
        raise Failure(f"the machine sent no results: {error}") from error


def run(parts, jobs, seconds, log_file=None, processors=1, counts_instructions=False):
    """Runs the jobs one after the other. Where programs of a job have to run at the same time, the machine
    needs two processors, which are slower to emulate.

    "GROUP/NAME" of each job is mapped to its files, of which "run" is the script.

    Returns the files that the jobs left: by "GROUP/NAME/FILE", and those of the whole machine. A file
    gets the machine's log. Raises Failure when the run exceeds its time or the log has a complaint.
    """
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch)
        root = scratch / "root"
        root.mkdir()
        build_root(parts, jobs, root)
        archive, results = scratch / "initramfs", scratch / "results"
        pack(root, archive)
        machine = command(parts.kernel(), archive, results, processors, counts_instructions)
        log_file = log_file or scratch / "log"
        try:
            with log_file.open("wb") as output:
                status = subprocess.run(machine, stdin=subprocess.DEVNULL, stdout=output,
                                        stderr=subprocess.STDOUT, timeout=seconds,
                                        check=False).returncode
        except subprocess.TimeoutExpired as late:
            raise Failure("\n".join([f"the machine still runs after {seconds} s; its log ends:",
                                     *lines_of(log_file)[-20:]])) from late
        log = "\n".join(lines_of(log_file))
        if status != 0:
            raise Failure(f"{shlex.join(machine)} ends with status {status}:\n{log}")
        check_log(log)
        return unpacked(results)
