Lines become JSON, one object for each.

  $ cat > stream <<'END'
  > # a comment
  > "LOG_SWITCH" "10.1" 1700000000 42 
  > 
  > "JOB_EXCEPTION" "9.0" 1700000060 7 1 2 1700000061 3 4
  > "END_OF_STREAM" "10.1" 1700000120
  > END
  $ wmq decode stream
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":1700000000,"eventLog":{"lastJobId":42}}
  {"type":"JOB_EXCEPTION","code":38,"version":"9.0","eventTime":1700000060,"eventLog":{"jobId":7,"exceptField2":1,"exceptField3":2,"exceptTime":1700000061,"exceptField5":3,"exceptField6":4}}
  {"type":"END_OF_STREAM","code":56,"version":"10.1","eventTime":1700000120,"eventLog":{"endOfStream":1}}
  $ wmq decode --pretty --type 43 stream
  {
    "type": "LOG_SWITCH",
    "code": 43,
    "version": "10.1",
    "eventTime": 1700000000,
    "eventLog": {
      "lastJobId": 42
    }
  }

Standard input is read when no file is given, or for -.

  $ wmq decode < stream | wc -l
  3
  $ cat stream | wmq decode stream - | wc -l
  6
  $ wmq decode - < /dev/null

Types are chosen by name or number, in one list or several.

  $ wmq decode --type LOG_SWITCH,END_OF_STREAM stream | cut -c 1-23
  {"type":"LOG_SWITCH","c
  {"type":"END_OF_STREAM"
  $ wmq decode --type 38 --type END_OF_STREAM stream | cut -c 1-24
  {"type":"JOB_EXCEPTION",
  {"type":"END_OF_STREAM",

Both ends of a time span belong to it.

  $ wmq decode --since 1700000060 stream | wc -l
  2
  $ wmq decode --since 2023-11-14T22:14:20Z --until 2023-11-14T23:14:20+01:00 stream | cut -c 1-23
  {"type":"JOB_EXCEPTION"
  $ wmq decode --until 1699999999 stream

What does not parse is reported, and the rest goes on.

  $ printf '%s\n' '"LOG_SWITCH" "10.1" 1 2 ' 'LOG' '#' '"LOG_SWITCH" "10.1" 1' '"LOG_SWITCH" "0" 1 2 ' \
  >   '"NO_SUCH" "10.1" 1' '"LOG_SWITCH" "10.1" 1 2 ' > faulty
  $ wmq decode faulty 2> faults | wc -l
  2
  [1]
  $ cut -d : -f 1-3 faults
  faulty:2: error 46 WMQE_BAD_FORMAT
  faulty:4: error 46 WMQE_BAD_FORMAT
  faulty:5: error 46 WMQE_BAD_FORMAT
  faulty:6: error 45 WMQE_BAD_EVENT
  $ wmq decode < faulty 2>&1 > /dev/null | cut -d : -f 1-3
  -:2: error 46 WMQE_BAD_FORMAT
  -:4: error 46 WMQE_BAD_FORMAT
  -:5: error 46 WMQE_BAD_FORMAT
  -:6: error 45 WMQE_BAD_EVENT
  [1]
  $ grep '^faulty:4' faults
  faulty:4: error 46 WMQE_BAD_FORMAT: LOG_SWITCH, field lastJobId at byte 21: a number

Of lines that are left out only the header is looked at.

  $ wmq decode --type JOB_NEW faulty 2>&1 | cut -d : -f 1-3
  faulty:2: error 46 WMQE_BAD_FORMAT
  faulty:5: error 46 WMQE_BAD_FORMAT
  faulty:6: error 45 WMQE_BAD_EVENT
  [1]
  $ wmq decode --since 2 faulty 2>&1 | grep -c faulty:4
  0
  [1]

A NUL is no part of a line, and control characters stay away from the terminal.

  $ printf '"LOG_SWITCH" "10.1" 1 2\0 \n' | wmq decode
  -:1: error 46 WMQE_BAD_FORMAT: byte 23 of the line is a NUL
  [1]
  $ printf '"LOG_SWITCH" "10.1" 1 2 \n' > "$(printf 'escape\033file')"
  $ printf 'x' >> "$(printf 'escape\033file')"
  $ wmq decode escape* 2>&1 | cut -d : -f 1-3
  {"type":"LOG_SWITCH","code":43,"version"
  escape\x1bfile:2: error 46 WMQE_BAD_FORMAT
  [1]

Types that consist of a header are read in the middle of others.

  $ printf '%s\n' '"JOB_VACATED" "10.1" 5' 'x' '"JOB_OCCUPY_REQ" "10.1" 6 rest' | wmq decode 2> /dev/null
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  {"type":"JOB_OCCUPY_REQ","code":29,"version":"10.1","eventTime":6,"eventLog":{}}
  [1]

A last line needs no line end.

  $ printf '"JOB_VACATED" "10.1" 5' | wmq decode
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}

Bytes that are no UTF-8 survive.

  $ printf '"GRP_CTRL" "10.1" 1 2 3 4 "gr\xff\xc3\xb6p" "x"\n' | tee line | wmq decode
  {"type":"GRP_CTRL","code":41,"version":"10.1","eventTime":1,"eventLog":{"grpField1":2,"grpCtrlField2":3,"grpCtrlField3":4,"grpCtrlStr":"gr\udcfföp","grpName":"x"}}
  $ wmq decode line | wmq encode | cmp - line

Files that cannot be read are reported, and the others are read.

  $ mkdir directory
  $ wmq decode missing directory stream | wc -l
  wmq: missing: No such file or directory
  wmq: directory: Is a directory
  3
  [3]

Output that fails ends with 3.

  $ wmq decode stream > /dev/full
  wmq: standard output: No space left on device
  [3]
  $ wmq decode stream >&-
  wmq: standard output: Bad file descriptor
  [3]
  $ wmq decode <&-
  wmq: standard input: Bad file descriptor
  [3]
  $ wmq --help > /dev/full
  wmq: standard output: No space left on device
  [3]

Threads change nothing but the time: output and messages come in the order of the input.

  $ wmq replay --limit 3000 "$EXAMPLES"/*.swf -o many > /dev/null
  $ awk 'NR % 1000 == 7 { print "broken" } { print }' many > mixed
  $ wmq decode -j 1 mixed 2> faults.1 > json.1
  [1]
  $ wc -l < faults.1 | grep -c '^1[0-9]$\|^2[0-9]$\|^[3-9][0-9]$'
  1
  $ for threads in 2 3 8; do wmq decode -j $threads mixed 2> faults > json; cmp json.1 json; cmp faults.1 faults; done
  $ gzip -k mixed; zstd -q mixed
  $ wmq decode -j 3 mixed.gz 2> /dev/null | cmp - json.1
  [1]
  $ wmq decode -j 3 - < mixed.zst 2> /dev/null | cmp - json.1
  [1]
  $ cat mixed | wmq decode -j 3 2>&1 > /dev/null | cut -d : -f 2- | cmp - <(cut -d : -f 2- faults.1)
  [1]
  $ wmq decode -j 2 many mixed many 2> faults | cmp - <(cat <(wmq decode many) json.1 <(wmq decode many))
  [1]
  $ cmp faults faults.1
  $ wmq decode -j 0 many
  wmq decode: --threads: Value 0 not in range 1 to 1024
  Try 'wmq decode --help'.
  [2]

Lines that a pipe has brought are not kept back while it brings no more.

  $ mkfifo pipe hold
  $ { head -n 3 many; cat hold; } > pipe &
  > wmq decode -j 2 pipe | { head -n 3 | wc -l; : > hold; }
  3
  $ { head -n 3 many; cat hold; } > pipe &
  > wmq decode -j 1 pipe | { head -n 3 | wc -l; : > hold; }
  3

A reader that has seen enough ends the program silently.

  $ wmq replay --limit 2000 "$EXAMPLES"/*.swf -o events > /dev/null
  $ (trap '' PIPE; wmq decode events; echo "[$?]" > status) | head -n 1 | cut -c 1-16; cat status
  {"type":"MBD_STA
  [141]
