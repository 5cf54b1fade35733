Records are printed as they come, across rotations.

  $ switch() { for i in "$@"; do echo "{\"type\":\"LOG_SWITCH\",\"eventTime\":$i,\"eventLog\":{\"lastJobId\":$i}}"; done; }
  $ switch 1 2 | wmq encode -o ./s
  $ echo '"END_OF_STREAM" "10.1" 3' >> s && mv s s.100
  $ switch 4 5 | wmq encode -o ./s
  $ wmq follow --from oldest --until-idle 0 s
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":1,"eventLog":{"lastJobId":1}}
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":2,"eventLog":{"lastJobId":2}}
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":4,"eventLog":{"lastJobId":4}}
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":5,"eventLog":{"lastJobId":5}}
  $ wmq follow --until-idle 0 --raw s
  "LOG_SWITCH" "10.1" 4 4 
  "LOG_SWITCH" "10.1" 5 5 
  $ wmq follow --from end --until-idle 0 s
  $ wmq follow --from oldest --until-idle 0 --since 2 --type LOG_SWITCH s | wc -l
  3
  $ wmq follow --from oldest --until-idle 0 --type JOB_NEW s

A position goes on with exactly the next record, also when the file has been rotated since.

  $ wmq follow --positions --until-idle 0 s | jq -r .position | head -n 1 > position
  $ echo '"END_OF_STREAM" "10.1" 6' >> s && mv s s.101
  $ switch 7 | wmq encode -o ./s
  $ wmq follow --from "$(cat position)" --until-idle 0 --notices s | jq -c '[.notice, .eventTime]'
  [null,5]
  ["rotated",null]
  [null,7]
  $ wmq follow --raw --positions --until-idle 0 s | sed 's/^1:.*\t/POSITION\t/'
  POSITION	"LOG_SWITCH" "10.1" 7 7 

So does a state.

  $ wmq follow --state state --from oldest --until-idle 0 s | wc -l
  5
  $ wmq follow --state state --from oldest --until-idle 0 s
  $ switch 8 | wmq encode -o ./s
  $ wmq follow --state state --until-idle 0 s | jq .eventTime
  8
  $ ls state*
  state

SIGTERM ends it in good order, SIGKILL in bad order; nothing is lost.

  $ wmq follow --state state --raw s > out & follower=$!
  > switch 9 | wmq encode -o ./s
  > until [ -s out ]; do sleep 0.01; done; kill $follower; wait $follower; echo "[$?]"; cat out
  [0]
  "LOG_SWITCH" "10.1" 9 9 
  $ rm out; wmq follow --state state --raw s > out & follower=$!
  > switch 10 | wmq encode -o ./s
  > until [ -s out ]; do sleep 0.01; done; kill -KILL $follower; wait $follower 2> /dev/null
  > switch 11 | wmq encode -o ./s
  > wmq follow --state state --raw --until-idle 0 s > again; cat out again | sort -u
  "LOG_SWITCH" "10.1" 10 10 
  "LOG_SWITCH" "10.1" 11 11 

The position is kept before anything has come: killed at once, it goes on from where it began.

  $ wmq follow --state fresh --from end s & follower=$!
  > until [ -s fresh ]; do sleep 0.01; done; kill -KILL $follower; wait $follower 2> /dev/null
  > switch 12 | wmq encode >> s
  > wmq follow --state fresh --from end --raw --until-idle 0 s
  "LOG_SWITCH" "10.1" 12 12 

A reader that takes nothing does not keep it from ending.

  $ mkfifo blocked; sleep 1000 < blocked & reader=$!
  > for i in $(seq 3000); do cat s; done > long
  > wmq follow --state stuck --raw long > blocked & follower=$!
  > until [ -s stuck ]; do sleep 0.01; done; kill $follower; wait $follower; echo "[$?]"; kill $reader
  > wmq follow --state stuck --raw --until-idle 0 long > rest
  > [ -s rest ] && tail -c "$(stat -c %s rest)" long | cmp - rest
  [0]

What it has got by then ends with a record, and the position is behind that.

  $ taste() { rm -f go; dd bs=1 count=1 2> tasted; }
  > later() { taste; until [ -e go ]; do sleep 0.01; done; cat; }
  > for form in --json --raw --positions; do
  >   rm -f got stuck; later < blocked > got & reader=$!
  >   wmq follow --state stuck $form long > blocked & follower=$!
  >   until [ -s got ]; do sleep 0.01; done; kill $follower; wait $follower; echo "[$?]"; touch go; wait $reader
  >   [ -z "$(tail -c 1 got)" ] && wmq follow --state stuck $form --until-idle 0 long >> got
  >   wmq follow $form --until-idle 0 long | cmp - got
  > done
  [0]
  [0]
  [0]

So does SIGHUP end it.

  $ wmq follow --state hung.state s > hung & follower=$!
  > until [ -s hung ]; do sleep 0.01; done; kill -HUP $follower; wait $follower; echo "[$?]"
  [0]
  $ wmq follow --until-idle 0 s | cmp - hung; wmq follow --state hung.state --until-idle 0 s

A record that is longer than all that a pipe holds is printed to its end before that.

  $ switch 1 | jq -c '.type = "JOB_NEW" | .eventLog = {userName: "u", queue: "q", fromHost: "h", command: ("x" * 300000)}' |
  > wmq encode > huge; cat huge s huge > huge.s
  $ rm got; later < blocked > got & reader=$!
  > wmq follow --state stuck2 --raw huge.s > blocked & follower=$!
  > until [ -s got ]; do sleep 0.01; done; kill $follower; sleep 1.5; touch go; wait $follower; echo "[$?]"; wait $reader
  > wmq follow --state stuck2 --raw --until-idle 0 huge.s | cat got - | cmp - huge.s
  [0]

Only a second signal ends it within one, which then is printed again.

  $ rm stuck2 got; { taste > got; exec sleep 1000; } < blocked & reader=$!
  > wmq follow --state stuck2 --raw huge > blocked & follower=$!
  > until [ -s got ]; do sleep 0.01; done
  > while kill $follower 2> /dev/null; do sleep 0.1; done; wait $follower; echo "[$?]"; kill $reader
  > wmq follow --state stuck2 --raw --until-idle 0 huge | cmp - huge
  wmq: standard output: ended within a record, of which nobody takes the rest
  [3]

A directory that is replaced is waited for.

  $ mkdir d; switch 1 | wmq encode -o d/s; cp -r d other; switch 2 | wmq encode -o other/s
  $ rm -f got; wmq follow d/s > got 2>&1 & follower=$!
  > until [ -s got ]; do sleep 0.01; done; mv d away; sleep 0.3; mv other d
  > until [ "$(wc -l < got)" = 2 ]; do kill -0 $follower || break; sleep 0.01; done
  > kill $follower; wait $follower; echo "[$?]"; jq .eventTime got
  [0]
  1
  2

A reader that has gone ends it, even when there is nothing to write.

  $ (trap '' PIPE; wmq follow --from oldest s; echo "[$?]" > status) | head -n 1 | jq .eventTime
  1
  $ cat status
  [141]

A command can take each record; when it fails, the position stays before it.

  $ rm state
  $ wmq follow --state state --until-idle 0 --exec 'jq .eventTime' s
  7
  8
  9
  10
  11
  12
  $ switch 13 14 | wmq encode -o ./s
  $ wmq follow --state state --until-idle 0 --exec 'jq .eventTime; exit 4' s
  13
  wmq: jq .eventTime; exit 4: exit status 4
  [3]
  $ wmq follow --state state --until-idle 0 --exec 'test -n "$WMQ_POSITION" && jq .eventTime' s
  13
  14

So it does when the record comes after a time in which nothing came.

  $ cp s quiet; { sleep 1.5; echo '"LOG_SWITCH" "10.1" 20 20' >> quiet; } &
  > wmq follow --from end --state quiet.state --exec 'jq .eventTime; exit 4' quiet
  20
  wmq: jq .eventTime; exit 4: exit status 4
  [3]
  $ wmq follow --state quiet.state --until-idle 0 quiet | jq .eventTime
  20

What is missing or malformed is told, and the exit status is 1.

  $ printf 'bad\n"LOG_SWITCH" "10.1" 1"LOG_SWITCH" "10.1" 15 15 \n' >> s
  $ wmq follow --state state --until-idle 0 s | jq .eventTime
  s: byte 210: error 46 WMQE_BAD_FORMAT: header of the line at byte 0: a quoted type name
  s: byte 214: torn: a record that was not written to its end
  15
  [1]
  $ wmq follow --until-idle 0 --notices s 2>&1 | grep notice
  {"notice":"bad line","file":"s","offset":210,"reason":"header of the line at byte 0: a quoted type name","error":46,"text":"bad"}
  {"notice":"torn","file":"s","offset":214,"reason":"a record that was not written to its end","text":"\"LOG_SWITCH\" \"10.1\" 1"}
  [1]
  $ rm s; switch 16 | wmq encode -o ./s
  $ wmq follow --state state --until-idle 0 s | jq .eventTime
  s: byte 0: gap: the file of the position is gone; what came behind the position, up to this file, is missing (how much is not known)
  16
  [1]

Positions, states and streams that are none.

  $ wmq follow --from here --until-idle 0 s
  wmq follow: --from: 'here' is no position
  Try 'wmq follow --help'.
  [2]
  $ mkdir directory; mkfifo pipe
  $ wmq follow --until-idle 0 directory
  wmq: directory: Is a directory
  [3]
  $ wmq follow --until-idle 0 pipe
  wmq: pipe: Not a regular file
  [3]
  $ echo nonsense > state
  $ wmq follow --state state --until-idle 0 s
  wmq: state: holds no position
  [3]
  $ wmq follow --until-idle 0 nowhere/s
  wmq: nowhere: No such file or directory
  [3]
  $ wmq follow --state nowhere/state --until-idle 0 s
  wmq: nowhere/state: No such file or directory
  [3]
  $ wmq follow --state directory --until-idle 0 s
  wmq: directory: Is a directory
  [3]
  $ wmq follow --state pipe --until-idle 0 s
  wmq: pipe: Not a regular file
  [3]

The state of another stream is a gap.

  $ switch 1 2 | wmq encode -o ./t; wmq follow --state t.state --until-idle 0 t | wc -l
  2
  $ switch 3 | wmq encode -o ./u; wmq follow --state t.state --until-idle 0 u | jq .eventTime
  u: byte 0: gap: the file of the position is gone; what came behind the position, up to this file, is missing (how much is not known)
  3
  [1]

Options that nobody can mean.

  $ wmq follow ''
  wmq follow: PATH: the file name is empty
  Try 'wmq follow --help'.
  [2]
  $ wmq follow -
  wmq follow: PATH: standard input is no stream, but can be decoded (wmq decode)
  Try 'wmq follow --help'.
  [2]
  $ for option in --from --state --exec; do wmq follow $option '' s; done
  wmq follow: --from: the position is empty
  Try 'wmq follow --help'.
  wmq follow: --state: the file name is empty
  Try 'wmq follow --help'.
  wmq follow: --exec: the command is empty
  Try 'wmq follow --help'.
  [2]
  $ for seconds in -1 nan inf 1x ''; do wmq follow --until-idle "$seconds" s; done 2>&1 | grep until
  wmq follow: --until-idle: '-1' is no number of seconds from 0 to 1000000000
  wmq follow: --until-idle: 'nan' is no number of seconds from 0 to 1000000000
  wmq follow: --until-idle: 'inf' is no number of seconds from 0 to 1000000000
  wmq follow: --until-idle: '1x' is no number of seconds from 0 to 1000000000
  wmq follow: --until-idle: '' is no number of seconds from 0 to 1000000000
  [2]
  $ wmq follow --type LOG_SWITCH,NOPE s
  wmq follow: --type: there is no event type 'NOPE'
  Try 'wmq follow --help'.
  [2]

Commands that end badly.

  $ wmq follow --until-idle 0 --exec 'kill -KILL $$' s
  wmq: kill -KILL $$: ended by signal 9
  [3]
  $ wmq follow --until-idle 0 --exec 'exec < /dev/null; cat nowhere' t
  cat: nowhere: No such file or directory
  wmq: exec < /dev/null; cat nowhere: exit status 1
  [3]

What it was started to ignore does not end it, nor the command.

  $ (trap '' TERM; exec wmq follow --until-idle 0 --exec 'kill $PPID; kill $$; jq .eventTime' t)
  1
  2

SIGTERM ends it behind the command at work, and the position is behind its record.

  $ wmq follow --state t.command --exec 'kill $PPID; cat' t
  {"type":"LOG_SWITCH","code":43,"version":"10.1","eventTime":1,"eventLog":{"lastJobId":1}}
  $ wmq follow --state t.command --until-idle 0 t | jq .eventTime
  2
  $ wmq follow --until-idle 0 s > /dev/full
  wmq: standard output: No space left on device
  [3]
