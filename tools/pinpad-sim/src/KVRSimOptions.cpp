#include "KVRSimOptions.h"

#include "KVRSimCard.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace {

const std::set<std::string> kFlags{"--pty",     "--help",          "-h",           "--verbose",
                                   "-v",        "--strict-abecs",  "--log-card-data", "--version"};
const std::set<std::string> kValued{"--link",        "--tcp",  "--bit-rate", "--state",  "--card",
                                    "--scenario",    "--display-log", "--command-log", "--name", "--model",
                                    "--serial",      "--sover",  "--manver",   "--fault"};

std::string cardNames() {
    std::string names;
    for (const auto& name : KVRSimCard::names()) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

}  // namespace

KVRSimOptions KVRSimOptions::parse(const std::vector<std::string>& arguments) {
    KVRSimOptions options;
    bool pty = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string option = arguments[i];
        std::optional<std::string> value;
        if (auto equals = option.find('='); option.rfind("--", 0) == 0 && equals != std::string::npos) {
            value = option.substr(equals + 1);
            option.resize(equals);
        }
        if (kFlags.count(option) && !value) {
            pty = pty || option == "--pty";
            options.help = options.help || option == "--help" || option == "-h";
            options.verbose = options.verbose || option == "--verbose" || option == "-v";
            options.version = options.version || option == "--version";
            options.strictAbecs = options.strictAbecs || option == "--strict-abecs";
            options.logCardData = options.logCardData || option == "--log-card-data";
        } else if (kValued.count(option)) {
            if (!value) {
                if (i + 1 >= arguments.size()) {
                    throw Invalid(option + " needs a value");
                }
                value = arguments[++i];
            }
            options.set(option, *value);
        } else {
            throw Invalid("unknown option " + option);
        }
    }
    if (pty && options.tcpPort) {
        throw Invalid("--pty and --tcp exclude each other");
    }
    if (options.link && options.tcpPort) {
        throw Invalid("--link goes with a pseudo-terminal, not with --tcp");
    }
    return options;
}

void KVRSimOptions::set(const std::string& option, const std::string& value) {
    if (option == "--tcp") {
        bool digits = !value.empty() && value.size() <= 5 && std::all_of(value.begin(), value.end(), ::isdigit);
        if (!digits || std::stoi(value) > 65535) {
            throw Invalid("--tcp needs a port number from 0 to 65535");
        }
        tcpPort = std::stoi(value);
    } else if (option == "--bit-rate") {
        bool digits = !value.empty() && value.size() <= 7 && std::all_of(value.begin(), value.end(), ::isdigit);
        if (!digits || std::stoi(value) < 1) {
            throw Invalid("--bit-rate needs a positive number of bits per second");
        }
        bitRate = std::stoi(value);
    } else if (option == "--card") {
        if (!KVRSimCard::named(value)) {
            throw Invalid("unknown card " + value + " (cards: " + cardNames() + ")");
        }
        card = value;
    } else if (option == "--link") {
        link = value;
    } else if (option == "--state") {
        stateDirectory = value;
    } else if (option == "--scenario") {
        scenario = value;
    } else if (option == "--fault") {
        faults.push_back(value);
    } else if (option == "--display-log") {
        displayLog = value;
    } else if (option == "--command-log") {
        commandLog = value;
    } else if (option == "--name") {
        identity.name = identityText(option, value, KVRSimIdentity::kNameWidth);
    } else if (option == "--model") {
        identity.model = identityText(option, value, KVRSimIdentity::kModelWidth);
    } else if (option == "--serial") {
        identity.serialNumber = identityText(option, value, KVRSimIdentity::kSerialNumberWidth);
    } else if (option == "--sover") {
        identity.softwareVersion = identityText(option, value, KVRSimIdentity::kSoftwareVersionWidth);
    } else if (option == "--manver") {
        identity.managerVersion = identityText(option, value, KVRSimIdentity::kManagerVersionWidth);
    }
}

std::string KVRSimOptions::identityText(const std::string& option, const std::string& value, size_t width) {
    bool printable = std::all_of(value.begin(), value.end(), [](unsigned char c) { return c >= 0x20 && c <= 0x7E; });
    if (value.size() > width || !printable) {
        throw Invalid(option + " takes at most " + std::to_string(width) + " printable ASCII characters");
    }
    return value;
}

std::string KVRSimOptions::helpText() {
    KVRSimIdentity defaults;
    return R"(Usage: kovra-pinpad-sim [--pty] [--link PATH] [--tcp PORT] [--bit-rate N] [--state DIR]
                        [--card NAME]
                        [--scenario FILE] [--fault JSON] [--display-log FILE] [--command-log FILE]
                        [--log-card-data] [--strict-abecs]
                        [--name TEXT] [--model TEXT] [--serial TEXT] [--sover TEXT] [--manver TEXT]
                        [--verbose] [--version] [--help]

An ABECS 2.12 PIN pad emulator for developing and testing against the Kovra
library. Packets are SYN, data, ETB, CRC-16/XMODEM of data and ETB (high byte
first); inside the data DC3, SYN and ETB travel as 13 33, 13 36 and 13 37, both
ways. A request is answered with ACK (0x06); a blocking command may then send
NTM notification packets; the response packet follows, with no ACK in between.
A bad CRC, a broken stuffing sequence, more than 1024 data bytes, or a text that
breaks its command's ABECS layout (every block length, field widths, digit, hex
and display fields) gets NAK (0x15) and the reason on standard error. An unknown
command is answered ERR010. NAK from the host sends the last packet again; CAN
(0x18) is answered EOT (0x04) in any state and abandons a command still waiting
for the cardholder.
Commands: OPN CLO GIN DSP RMC PRT GPN GCR GOC FNC TLI TLR TLE. Display texts
(DSP, RMC, CLO, the GPN prompt) and NTM texts are Latin-1. GOC carries three
blocks (the second and third each a byte count and a tag list), FNC two. TLR
takes AID records (table type 1, 281 characters) and CAPK records (type 2, 608
characters), each after a three-digit length that counts its own digits.
Table commands outside a load (TLR or TLE without TLI) are answered 010. CLO is
answered CLO000.

Besides ABECS it takes the layouts the Kovra library keeps on purpose: OPN000
and TLE000 (an empty block), GCR of application type 00 without its
application list, DSP000, and a GPN without working key whose PAN is
right-aligned with length 00 and 0 entries.
  --strict-abecs      refuse those kept layouts too (NAK, with the reason), as a
                      strict ABECS 2.12 PIN pad would

Endpoint (one of):
  --pty               a pseudo-terminal, raw on both sides (the default)
  --link PATH         with a pseudo-terminal: keep a symbolic link PATH to its
                      slave device (removed on exit)
  --tcp PORT          listen on 127.0.0.1:PORT, one host at a time; 0 picks a free port
  --bit-rate N        simulate a serial line of N bit/s (10 bits a byte): bytes sent
                      leave at that pace, and a request counts as arrived only after
                      its bytes' line time (default: no pacing; ABECS lines run 19200)
When it can accept requests it prints exactly one line to standard output:
  kovra-pinpad-sim ready on /dev/pts/N
  kovra-pinpad-sim ready on tcp://127.0.0.1:PORT
(the link, if any, is reported on standard error). After a hang-up of a
pseudo-terminal a new one is opened, the link moved, and the line printed again.
It keeps serving after the host disconnects; SIGINT or SIGTERM end it.

State and cards:
  --state DIR         keep the EMV tables loaded by TLI/TLR/TLE in DIR/pinpad-tables.json,
                      so they survive a restart. Until a complete load (TLI, TLR..., TLE)
                      with the GCR's table stamp is current, GCR answers 020; TLI makes
                      the previous tables invalid.
  --card NAME         the card presented to GCR (default chip-visa):
                        chip-visa    chip, card type 03, recidx 03, PAN 4761739001010010
                        chip-master  chip, card type 03, recidx 04, PAN 5413330089600010
                        stripe       stripe, recidx 03, PAN 4111111111111111, service code 101 (no PIN)
                        stripe-pin   stripe, recidx 04, PAN 5555555555554444, service code 120 (PIN)
                        stripe-chip  stripe, recidx 03, PAN 4012001037141112, service code 201
                                     (a chip card swiped)
                      All expire in December 2028 (2812).

Identity (GIN reply; texts are space-filled to their width):
  --name TEXT         20 characters at most (default ")" +
           defaults.name + R"(")
  --model TEXT        19 characters at most (default ")" +
           defaults.model + R"(")
  --serial TEXT       20 characters at most (default ")" +
           defaults.serialNumber + R"(")
  --sover TEXT        20 characters at most (default ")" +
           defaults.softwareVersion + R"(")
  --manver TEXT       16 characters at most (default ")" +
           defaults.managerVersion + R"(")
  The contactless flag is "0" and the specification version ")" +
           defaults.specificationVersion + R"(".

Logs:
  --command-log FILE  append each request text received, without framing, one per line;
                      card data is masked ('*'): the PAN of GPN keeps its first six and
                      last four digits, and a GPN that could not be parsed shows no data
  --log-card-data     write card data to the command log in clear (test benches only)
  --display-log FILE  append each display state (DSP, RMC, CLO, a GPN prompt, an NTM
                      text) as one line: the first 16-character line, "|", the second,
                      e.g. "TRANSACAO       |APROVADA        "
  --verbose           one line per exchange on standard error (command and return code)
  --version           print the version and exit

Scenarios (--scenario FILE, JSON; --fault JSON adds one rule, repeatable):
  {
    "card":  "chip-master",                           default card unless --card is given
    "cards": ["chip-visa", "chip-master", "stripe-pin"],
                                                      one card per GCR answered 000,
                                                      the last one repeats
    "faults": [ RULE, ... ]
  }
  A RULE is an object for one command; every rule that applies to a request
  is used, later rules winning on single values:
    "command": "GOC"      the command name (required)
    "nth": 2              only the 2nd valid request of that command; default: every one
    "times": 1            at most this many requests
  what the reply says:
    "status": 13          answer only the name and this return code: GCR 13 (user cancel),
                          GCR 70 (card invalid), GOC 12 (time-out), GOC 13 (cancel)...
    "decision": 1         GOC decision (0 approved off-line, 1 declined off-line,
                          2 go on-line, the default) or FNC decision (default 0 for
                          action code "00", 2 otherwise)
    "card": "stripe"      the card for this GCR (does not use up "cards")
  how it travels:
    "ntm": ["INSIRA OU PASSE O CARTÃO"]
                          notification packets after the ACK and before the reply,
                          "NTM000" + 3-digit length + message of at most 32
                          characters, sent in Latin-1 (others become "?")
    "delay_ms": 500       pause between the ACK and the rest (the cardholder taking
                          time; a CAN abandons the command meanwhile)
    "split": 5            write the response frame in pieces of 5 bytes,
    "split": [1, 4]       or of these sizes and then the rest
    "split_delay_ms": 50  pause between pieces (default 50)
    "stray_syn": 3        insert a 0x16 after 3 characters of the reply text (true: 3)
    "bad_crc": true       send the response frame with a wrong CRC (a NAK from the host
                          then gets it again, intact)
    "nak": true           refuse the request with NAK, as if it had arrived damaged;
                          the copy the host sends again is answered. Not counted as
                          a request for "nth"; with "nth" or "times" it picks which
    "silence": true       send nothing (with "ack": true, only the ACK)
    "hangup": "instead"   close the connection (TCP) or the pseudo-terminal instead of
                          replying (with "ack": true, after the ACK); true means "instead"
    "hangup": "after"     close it right after the reply
  A GCR answered 020 because the tables are out of date is answered before any
  rule is consulted and is not counted.

Example:
  kovra-pinpad-sim --tcp 0 --state /tmp/pinpad --fault '{"command":"GOC","status":12,"nth":2}'
)";
}
