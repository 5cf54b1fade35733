JSON becomes lines, and the lines the same JSON.

  $ cat > records.json <<'END'
  > {"type":"LOG_SWITCH","eventTime":1700000000,"eventLog":{"lastJobId":42}}
  > 
  > {"code":3,"eventTime":1700000060,"eventLog":{"jobId":7,"jStatus":64,"cpuTime":1.5}}
  > END
  $ wmq encode records.json
  "LOG_SWITCH" "10.1" 1700000000 42 
  "JOB_STATUS" "10.1" 1700000060 7 64 0 0 1.5000 0 0 0 0 0 "" 0 "" 0 0 0 0
  $ wmq encode < records.json > lines
  $ wmq decode lines > again.json
  $ wmq encode again.json | cmp - lines

What is refused is reported, and nothing is written for it.

  $ cat > faulty.json <<'END'
  > {"type":"LOG_SWITCH","eventLog":{"lastJobId":1}}
  > nonsense
  > {"type":"LOG_SWITCH","eventLog":{"lastJobID":1}}
  > {"type":"LOG_SWITCH","code":3}
  > {"type":"NO_SUCH"}
  > {"type":"LOG_SWITCH","eventLog":{"lastJobId":2147483648}}
  > {"type":"LOG_SWITCH","eventLog":{"lastJobId":2}} trailing
  > {"type":"END_OF_STREAM"}
  > {"type":"JOB_FINISH","eventLog":{"allocSlots":[""]}}
  > {"type":"LOG_SWITCH","eventLog":{"lastJobId":3}}
  > END
  $ wmq encode faulty.json 2> faults
  "LOG_SWITCH" "10.1" 0 1 
  "LOG_SWITCH" "10.1" 0 3 
  [1]
  $ cut -d : -f 1-3 faults
  faulty.json:2: error 46 WMQE_BAD_FORMAT
  faulty.json:3: error 46 WMQE_BAD_FORMAT
  faulty.json:4: error 45 WMQE_BAD_EVENT
  faulty.json:5: error 45 WMQE_BAD_EVENT
  faulty.json:6: error 46 WMQE_BAD_FORMAT
  faulty.json:7: error 46 WMQE_BAD_FORMAT
  faulty.json:8: error 45 WMQE_BAD_EVENT
  faulty.json:9: error 54 WMQE_SYS
  $ grep :6: faults
  faulty.json:6: error 46 WMQE_BAD_FORMAT: eventLog.lastJobId: 2147483648 is out of range

A type that has only a header leaves its line open.

  $ echo '{"type":"JOB_VACATED","eventTime":5}' | wmq encode
  "JOB_VACATED" "10.1" 5 (no line end)

With -o the lines go to a stream file. A bare name is in the current directory.

  $ wmq encode -o stream records.json
  $ cmp stream lines
  $ wmq encode -o ./stream < records.json
  $ cat lines lines | cmp - stream
  $ stat -c %a stream
  644

With --sync it ends when the disk has everything, or says that the disk may not.

  $ wmq encode --sync -o synced records.json
  $ cmp synced lines
  $ mkdir moved
  $ { cat records.json; for i in $(seq 300); do [ -e moved/stream ] && break; sleep 0.1; done; mv moved gone; } | wmq encode --sync -o moved/stream
  wmq: moved/stream: error 54 WMQE_SYS: No such file or directory
  [3]
  $ cmp gone/stream lines

The stream decides what stays of a record that it refuses half-way, and the next one is written.

  $ sed -n '9,10p' faulty.json | wmq encode -o refused 2>&1 | cut -d : -f 1-3
  -:1: error 54 WMQE_SYS
  [1]
  $ tail -c 28 refused
  0 1"LOG_SWITCH" "10.1" 0 3 

It rotates, and keeps as many old files as it is told.

  $ mkdir rotating
  $ for i in $(seq 2000); do cat records.json; done | wmq encode -o rotating/stream --max-size 20K --max-files 3
  $ ls rotating | sed 's/[0-9]\{10\}/SECONDS/'
  stream
  stream.SECONDS
  stream.SECONDS
  stream.SECONDS
  $ tail -q -n 1 rotating/stream.* | cut -c 1-22
  "END_OF_STREAM" "10.1"
  "END_OF_STREAM" "10.1"
  "END_OF_STREAM" "10.1"
  $ wmq stats rotating/* | head -n 1 | cut -d , -f 4
   64

Ten old files are kept unless it is told.

  $ mkdir ten
  $ for i in $(seq 2000); do cat records.json; done | (cd ten; wmq encode -o stream --max-size 10000)
  $ ls ten | wc -l
  11

Output that fails ends with 3, and nothing more is read.

  $ wmq encode records.json > /dev/full
  wmq: standard output: No space left on device
  [3]
  $ wmq encode -o missing/stream records.json
  wmq: missing/stream: error 54 WMQE_SYS: No such file or directory
  [3]
  $ mkdir directory
  $ wmq encode -o directory records.json
  wmq: ./directory: error 54 WMQE_SYS: Is a directory
  [3]

Where a stream file could not take a record, it tells which it was.

  $ (trap '' XFSZ; ulimit -f 1; yes "$(head -n 1 records.json)" | wmq encode -o full)
  wmq: ./full: error 54 WMQE_SYS: File too large; stopped at -:30
  [3]
  $ for i in $(seq 40); do cat records.json; done > many.json
  $ (trap '' XFSZ; ulimit -f 1; wmq encode -o again many.json)
  wmq: ./again: error 54 WMQE_SYS: File too large; stopped at many.json:30
  [3]
  $ mkdir lost; touch lost/stream.007
  $ yes "$(head -n 1 records.json)" | head -n 200 | wmq encode -o lost/stream --max-size 1K --max-files 1
  wmq: lost/stream: error 54 WMQE_SYS: rotation: cannot remove stream.007 by the suffix 7: No such file or directory; stopped at -:100
  [3]
  $ { sed -n 9p faulty.json; cat records.json; } | wmq encode -o /dev/full 2>&1 | cut -d : -f 1-4
  -:1: error 54 WMQE_SYS: JOB_FINISH, field allocSlots at byte 236
  wmq: /dev/full: error 54 WMQE_SYS: No space left on device; stopped at -
  [3]

What it writes to it does not read, whatever the names.

  $ cp records.json io; ln io hard; ln -s io soft; ln -s none loose
  $ wmq encode io -o ./io
  wmq encode: io and ./io are the same file, which cannot be read and written at once
  Try 'wmq encode --help'.
  [2]
  $ wmq encode records.json soft -o io 2>&1 | head -n 1
  wmq encode: soft and io are the same file, which cannot be read and written at once
  [2]
  $ wmq encode -o hard - < io 2>&1 | head -n 1
  wmq encode: standard input and hard are the same file, which cannot be read and written at once
  [2]
  $ wmq encode -o hard < io 2>&1 | head -n 1
  wmq encode: standard input and hard are the same file, which cannot be read and written at once
  [2]
  $ wmq encode io 2>&1 >> io | head -n 1
  wmq encode: io and standard output are the same file, which cannot be read and written at once
  [2]
  $ wmq encode none -o loose 2>&1 | head -n 1
  wmq encode: none and loose are the same file, which cannot be read and written at once
  [2]
  $ cmp io records.json
  $ wmq encode -o /dev/null /dev/null
