Help and version go to standard output.

  $ wmq --version
  wmq 1.0.0
  $ wmq --help
  Usage: wmq COMMAND [OPTION]... [ARGUMENT]...
  
  Turn the event streams of a batch job scheduler into JSON and back, write them,
  and tell what is in them.
  
  Commands:
    decode              Print the records of stream files as JSON, one object on
                        one line
    encode              Write JSON records, one object on one line, as lines of a
                        stream file
    replay              Turn a workload trace into the events that a scheduler
                        would have logged
    stats               Tell what is in a stream
    follow              Print the records of a stream as they come, one JSON
                        object a line
    verify              Prove that a stream is whole
    schema              Tell how the records of a type stand on the line
  
  Options:
    -h, --help          print this help and end
        --version       print the version and end
        --help-all      print the help of all commands and end
  
  Every command explains itself: wmq COMMAND --help.
  
  Exit status:
    0                   all went well
    1                   some input was bad; all else was done
    2                   the command line was wrong
    3                   an output or the system failed
  
  Environment:
    NO_COLOR            when set and not empty, nothing is coloured
  
  Examples:
    wmq decode stream | jq .type
    wmq replay trace.swf.gz -o ./stream --max-size 4M
    wmq stats stream stream.*
    wmq follow --state here stream | jq .type
  $ wmq decode --help
  Usage: wmq decode [OPTION]... [FILE]...
  
  Print the records of stream files as JSON, one object on one line.
  FILE may be plain, gzip or zstd; without FILE, or when FILE is -, standard
  input is read. Lines that begin with # are skipped. A line that does not
  parse is reported on standard error as
  
    FILE:LINE: error NUMBER NAME: what is wrong
  
  and the next line goes on; the exit status is 1 then. Of lines that --type,
  --since or --until leave out only the header is looked at.
  
  Options:
    -h, --help          print this help and end
        --type=T,...    only records of these types, given by name or number
        --since=TIME    only records of this time or later
        --until=TIME    only records of this time or earlier
        --pretty        indent the objects over several lines
        --split-joined, --no-split-joined
                        print each of the records that stand on one line, which
                        some types and interrupted writers leave open (default);
                        --no-split-joined: one record for each line
    -j, --threads=N     work on the input in N threads (default: one for each
                        processor)
  
  TIME is a number of seconds since 1970-01-01T00:00:00Z, or ISO 8601 with a
  zone: 2023-11-14T22:13:20Z, 2023-11-14T23:13+01:00.
  
  Examples:
    wmq decode --type JOB_START,JOB_FINISH --since 2023-11-14T00:00Z stream
    tail -f stream | wmq decode | jq .eventLog.jobId
  $ wmq encode -h
  Usage: wmq encode [OPTION]... [FILE]...
  
  Write JSON records, one object on one line, as lines of a stream file.
  The form is the one that decode prints; members that are left out are zero or
  empty. FILE may be plain, gzip or zstd; without FILE, or when FILE is -,
  standard input is read. An object that is refused is reported on standard
  error as
  
    FILE:LINE: error NUMBER NAME: what is wrong
  
  and the next one goes on; the exit status is 1 then. On standard output nothing
  stands for it. In a stream file (-o) the beginning of a line that failed midway
  may stand, and the next record goes on behind it.
  The status stream carries JOB_STATUS2 records, the pending-reasons stream
  JOB_PENDING_REASONS records; each drops most others without a word.
  
  Options:
    -h, --help          print this help and end
        --kind=KIND     write as this stream does: events (default), status or
                        pending
    -o, --output=FILE   append to this stream file, which rotates into
                        FILE.SECONDS, instead of writing to standard output
        --max-size=N    rotate FILE when it has N bytes or more, K, M and G
                        allowed behind the number (default 1000000000); looked at
                        before every 100th record of a run, never in a run of
                        fewer
        --max-files=N   keep N old files (default 10)
        --sync          bring FILE and the old files made of it to the disk
                        before ending (fsync), and end with 3 if that fails
  
  Examples:
    wmq decode stream.1700000000 | jq -c 'del(.eventLog.command)' | wmq encode
    wmq encode -o events/stream --max-size 4M --max-files 3 < records.json
    wmq encode --kind status -o ./wmq.status < samples.json
  $ wmq replay --help
  Usage: wmq replay [OPTION]... -o FILE TRACE
  
  Turn a workload trace into the events that a scheduler would have logged.
  TRACE is in the Standard Workload Format, plain, gzip or zstd; - is standard
  input. Its jobs become JOB_NEW, JOB_START, JOB_START_ACCEPT, JOB_EXECUTE,
  JOB_STATUS, JOB_SIGNAL, JOB_FINISH and JOB_FINISH2 records in order of time,
  between the MBD_START and the MBD_DIE of the scheduler. A bad line is reported
  on standard error as
  
    FILE:LINE: error NUMBER NAME: what is wrong
  
  and skipped; the exit status is 1 then.
  
  Options:
    -h, --help          print this help and end
    -o, --output=FILE   append to this stream file, which rotates into
                        FILE.SECONDS; - is standard output
        --max-size=N    rotate FILE when it has N bytes or more, K, M and G
                        allowed behind the number (default 1000000000); looked at
                        before every 100th record of a run, never in a run of
                        fewer
        --max-files=N   keep N old files (default 10)
        --sync          bring FILE and the old files made of it to the disk
                        before ending (fsync), and end with 3 if that fails
        --status=FILE   append a JOB_STATUS2 of each running job, every 300
                        seconds, to this stream file
        --pending=FILE  append JOB_PENDING_REASONS of the waiting jobs, every 300
                        seconds, to this stream file
        --limit=N       stop after N jobs of the trace
  
  Queues and partitions have the names of the trace's header; other names are
  made of their numbers (user17). Hosts are invented, the same ones at every
  replay. What the trace does not know is left at the record's default, but for
  the user (unknown), the queue (default) and the first host of a job that has
  started. A job that was cancelled before it started (status 5 with run time -1,
  or with run time 0 and allocated processors -1) has no JOB_START, and startTime
  0 in its JOB_FINISH. Lines of partial runs (status 2 to 4) are passed over,
  because the line of the whole job stands before them. Exit statuses are those of
  wait(2): 0 for completed jobs, 256 for failed and 15 for cancelled ones.
  
  Samples tell of the jobs that run or wait at the full 5 minutes of the trace's
  time, after all that happens in that second; all three files rotate alike. CPU
  time is spread evenly over a job's run. Jobs wait for other jobs on which they
  depend (reason 1), for processors (2, where the trace tells how many there are)
  or for their turn (3), and are put together by user, queue and reason.
  
  Examples:
    wmq replay trace.swf.gz -o events/stream --max-size 4M --max-files 3
    wmq replay trace.swf -o events --status status --pending pending
    wmq replay --limit 100 trace.swf -o - | wmq decode --type JOB_FINISH
  $ wmq stats --help
  Usage: wmq stats [OPTION]... [FILE]...
  
  Tell what is in a stream.
  Records and bytes of each type, versions, malformed lines, time span; jobs,
  users, queues, exit statuses; wait times (median and 95th percentile) and
  core-hours of each queue and of the ten biggest users. Of a status stream:
  running jobs, cores and memory over time. Of a pending-reasons stream: the
  reasons by jobs and waiting time. FILE may be plain, gzip or zstd; without FILE,
  or when FILE is -, standard input is read. The files of a stream may be given in
  any order; standard input must be in order of time.
  A line that does not parse is counted and reported on standard error as
  
    FILE:LINE: error NUMBER NAME: what is wrong
  
  and the exit status is 1 then. Of lines that tell nothing of these things but
  their type and time only the header is looked at.
  
  Options:
    -h, --help          print this help and end
        --json          print one JSON object instead of tables; times are in
                        seconds
    -j, --threads=N     work on the input in N threads (default: one for each
                        processor)
  
  A job counts with the queue and the user of its JOB_FINISH, one that has not
  ended with those of its JOB_NEW. Its cores are the hosts in its JOB_FINISH, a
  host counting as often as it is listed. A percentile is the smallest value that
  so many of the values do not exceed; of more than 4096 values it is exact up to
  255 seconds and within 0.4 % above, which a ~ shows.
  
  Jobs, cores and memory are means over the samples of a span of time, and the
  highest of one sample. A sample is all that is said of one second; a second in
  which nothing runs has none. Job-hours of a reason are the jobs of its records
  times their sample intervals.
  
  Examples:
    wmq stats stream stream.*
    zcat old/*.gz | wmq stats --json | jq .runSeconds
  $ wmq schema --help
  Usage: wmq schema [OPTION]... [TYPE]
  
  Tell how the records of a type stand on the line.
  The table has one row for each field in the order of the line: its position,
  its form, the versions that carry it, the condition on other fields, and its
  value where the line has none. A + before the form: read together with the field
  before it. Without TYPE (a name or a number) all types follow each other.
  
  Options:
    -h, --help          print this help and end
        --version=V     only what a line of version V carries
        --json          print a JSON object for each type, one on a line
        --markdown=DIR  write a page for each type and an index into the
                        directory DIR instead of printing
  
  Examples:
    wmq schema JOB_FINISH --version 9.1
    wmq schema --json | jq -r '.fields[].field'

All of them in one go.

  $ wmq --help-all | grep ^Usage
  Usage: wmq COMMAND [OPTION]... [ARGUMENT]...
  Usage: wmq decode [OPTION]... [FILE]...
  Usage: wmq encode [OPTION]... [FILE]...
  Usage: wmq replay [OPTION]... -o FILE TRACE
  Usage: wmq stats [OPTION]... [FILE]...
  Usage: wmq follow [OPTION]... PATH
  Usage: wmq verify [OPTION]... PATH
  Usage: wmq schema [OPTION]... [TYPE]

No line is too wide for a terminal.

  $ wmq --help-all | awk 'length > 80'

A wrong command line ends with 2 and says where help is.

  $ wmq
  wmq: a command is missing
  Try 'wmq --help'.
  [2]
  $ wmq frobnicate
  wmq: The following argument was not expected: frobnicate
  Try 'wmq --help'.
  [2]
  $ wmq --frobnicate
  wmq: The following argument was not expected: --frobnicate
  Try 'wmq --help'.
  [2]
  $ wmq decode --type JOB_NEW,JOB_OLD
  wmq decode: --type: there is no event type 'JOB_OLD'
  Try 'wmq decode --help'.
  [2]
  $ wmq decode --since 2000-01-01T00:00:00
  wmq decode: --since: '2000-01-01T00:00:00': the time zone is missing: add Z or an offset such as +01:00
  Try 'wmq decode --help'.
  [2]
  $ wmq decode --until
  wmq decode: --until: 1 required TIME missing
  Try 'wmq decode --help'.
  [2]
  $ wmq encode --max-size 4M
  wmq encode: --max-size requires --output
  Try 'wmq encode --help'.
  [2]
  $ wmq encode -o stream --max-size 4T
  wmq encode: --max-size: '4T' is no size from 1 to 2147483647 bytes
  Try 'wmq encode --help'.
  [2]
  $ wmq encode -o stream --max-size 0
  wmq encode: --max-size: '0' is no size from 1 to 2147483647 bytes
  Try 'wmq encode --help'.
  [2]
  $ wmq encode -o stream --max-size 2G
  wmq encode: --max-size: '2G' is no size from 1 to 2147483647 bytes
  Try 'wmq encode --help'.
  [2]
  $ wmq encode -o stream --max-size ''
  wmq encode: --max-size: '' is no size from 1 to 2147483647 bytes
  Try 'wmq encode --help'.
  [2]
  $ wmq encode -o ''
  wmq encode: --output: the file name is empty
  Try 'wmq encode --help'.
  [2]
  $ wmq encode -o stream --max-files 0
  wmq encode: --max-files: Value 0 not in range 1 to 2147483647
  Try 'wmq encode --help'.
  [2]
  $ wmq replay trace.swf -o stream --max-files 0
  wmq replay: --max-files: Value 0 not in range 1 to 2147483647
  Try 'wmq replay --help'.
  [2]
  $ wmq replay trace.swf -o stream --limit 0
  wmq replay: --limit: Value 0 not in range 1 to 9223372036854775807
  Try 'wmq replay --help'.
  [2]
  $ wmq replay trace.swf -o stream --limit -1
  wmq replay: --limit: Value -1 not in range 1 to 9223372036854775807
  Try 'wmq replay --help'.
  [2]
  $ wmq replay trace.swf
  wmq replay: --output is required
  Try 'wmq replay --help'.
  [2]
  $ wmq replay -o stream
  wmq replay: TRACE is required
  Try 'wmq replay --help'.
  [2]
  $ wmq replay trace.swf -o stream --status ''
  wmq replay: --status: the file name is empty
  Try 'wmq replay --help'.
  [2]
  $ wmq replay trace.swf -o stream --pending ''
  wmq replay: --pending: the file name is empty
  Try 'wmq replay --help'.
  [2]
  $ wmq schema JOB_OLD
  wmq schema: TYPE: there is no event type 'JOB_OLD'
  Try 'wmq schema --help'.
  [2]
  $ wmq schema JOB_NEW JOB_START
  wmq schema: The following argument was not expected: JOB_START
  Try 'wmq schema --help'.
  [2]
  $ wmq schema --version new
  wmq schema: --version: 'new' is no version such as 9.1
  Try 'wmq schema --help'.
  [2]
  $ wmq schema JOB_NEW --markdown pages
  wmq schema: TYPE excludes --markdown
  Try 'wmq schema --help'.
  [2]
  $ wmq schema --markdown ''
  wmq schema: --markdown: the directory name is empty
  Try 'wmq schema --help'.
  [2]
  $ ls

Where nothing stands behind the = of an option, the next argument does not become its value.

  $ wmq encode --output= records.json
  wmq encode: --output: no value stands behind the =
  Try 'wmq encode --help'.
  [2]
  $ for option in 'decode --'{type,since,until,threads} 'encode --'{kind,output,max-size,max-files} \
  >   'replay --'{output,max-size,max-files,status,pending,limit} 'stats --threads' 'verify --threads' \
  >   'schema --'{version,markdown} 'follow --'{state,from,type,since,exec,until-idle}; do
  >   wmq $option= missing 2>&1 | head -n 1 | grep -v ': --[a-z-]*: no value stands behind the =$'
  > done
  [1]
  $ wmq encode -- --output=
  wmq: --output=: No such file or directory
  [3]
  $ ls

A file may have the name of a command.

  $ printf '"JOB_VACATED" "10.1" 5\n' > stats
  $ wmq decode stats
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
