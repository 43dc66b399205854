# SPDX-License-Identifier: Apache-2.0
# bash completion of pwrmgtctl, written by `pwrmgtctl completion bash`.
_pwrmgtctl() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local words='' command=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words='power performance cpu psu thermal capping gpu redundancy policy settings meter store check metrics --help --version'
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
        return
    fi
    if ((COMP_CWORD == 2)); then
        case $command in
            'power') words='history summary realtime available' ;;
            'performance') words='history' ;;
            'cpu') words='history latest' ;;
            'psu') words='list voltage history summary' ;;
            'thermal') words='history realtime' ;;
            'capping') words='get set ranges' ;;
            'gpu') words='get set realtime' ;;
            'redundancy') words='get set auto' ;;
            'policy') words='get set' ;;
            'settings') words='get set' ;;
            'meter') words='read slots' ;;
            'store') words='read' ;;
        esac
        if [[ $words ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$words --help" -- "$cur")
            return
        fi
    elif [[ ${COMP_WORDS[2]} != -* ]]; then
        command+=" ${COMP_WORDS[2]}"
    fi
    case "$command $prev" in
        'power history --period') words='1h 6h 12h 24h' ;;
        'power history --entries') return ;;
        'power history --minutes') return ;;
        'power history --end') return ;;
        'power history --samples-per-entry') return ;;
        'power history --svg') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'power history --png') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'power history --domain') words='system cpu memory' ;;
        'power summary --minutes') return ;;
        'power summary --domain') words='system cpu memory' ;;
        'power realtime --watch-count') return ;;
        'power available --watch-count') return ;;
        'performance history --period') words='1h 6h 12h 24h' ;;
        'performance history --entries') return ;;
        'performance history --minutes') return ;;
        'performance history --end') return ;;
        'performance history --samples-per-entry') return ;;
        'performance history --svg') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'performance history --png') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'cpu history --rows') return ;;
        'cpu history --svg') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'cpu history --png') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'psu list --watch-count') return ;;
        'psu history --period') words='1h 6h 12h 24h' ;;
        'psu history --entries') return ;;
        'psu history --minutes') return ;;
        'psu history --end') return ;;
        'psu history --samples-per-entry') return ;;
        'psu history --svg') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'psu history --png') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'psu summary --minutes') return ;;
        'thermal history --period') words='1h 6h 12h 24h' ;;
        'thermal history --entries') return ;;
        'thermal history --minutes') return ;;
        'thermal history --end') return ;;
        'thermal history --minutes-per-entry') return ;;
        'thermal history --svg') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'thermal history --png') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'thermal history --sensor') words='inlet1 inlet2 cpu1 cpu2 cpu3 cpu4 cpu5 cpu6 cpu7 cpu8 memory1 memory2 memory3 memory4 memory5 memory6 memory7 memory8 exhaust1 exhaust2' ;;
        'thermal realtime --watch-count') return ;;
        'capping set --mode') return ;;
        'capping set --audit') return ;;
        'gpu get --kind') words='16 32' ;;
        'gpu set --kind') words='16 32' ;;
        'gpu realtime --watch-count') return ;;
        'policy set --ac-soft') words='none' ;;
        'policy set --ac-min') words='none' ;;
        'policy set --ac-max') words='none' ;;
        'policy set --dc-soft') words='none' ;;
        'policy set --dc-min') words='none' ;;
        'policy set --dc-max') words='none' ;;
        'policy set --blade') words='no yes unmanaged' ;;
        'meter slots --watch-count') return ;;
        'store read --output') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        'check --supplies') return ;;
        'check --redundancy') return ;;
        'check --warning') return ;;
        'check --critical') return ;;
        'check --max-age') return ;;
        'check --skip') words='supplies redundancy draw age' ;;
        'metrics --output') mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        *) case $command in
            'power history') words='--help --json --timing --period --entries --minutes --end --samples-per-entry --local --oldest-first --csv --plot --svg --png --domain' ;;
            'power summary') words='--help --json --timing --minutes --local --domain' ;;
            'power realtime') words='--help --json --timing --live --local --watch --watch-count' ;;
            'power available') words='--help --json --timing --watch --watch-count' ;;
            'performance history') words='--help --json --timing --period --entries --minutes --end --samples-per-entry --local --oldest-first --csv --plot --svg --png' ;;
            'cpu history') words='1 2 3 4 5 6 7 8 all --help --json --timing --rows --local --oldest-first --csv --plot --svg --png' ;;
            'cpu latest') words='1 2 3 4 5 6 7 8 all --help --json --timing --local' ;;
            'psu list') words='--help --json --timing --watch --watch-count' ;;
            'psu voltage') words='--help --json --timing' ;;
            'psu history') words='--help --json --timing --period --entries --minutes --end --samples-per-entry --local --oldest-first --csv --plot --svg --png' ;;
            'psu summary') words='--help --json --timing --minutes --local' ;;
            'thermal history') words='--help --json --timing --period --entries --minutes --end --minutes-per-entry --local --csv --plot --svg --png --sensor' ;;
            'thermal realtime') words='--help --json --timing --local --watch --watch-count' ;;
            'capping get') words='--help --json --timing --ungated' ;;
            'capping set') words='on off --help --json --timing --mode --audit --dc --force' ;;
            'capping ranges') words='--help --json --timing --dc' ;;
            'gpu get') words='--help --json --timing --kind' ;;
            'gpu set') words='--help --json --timing --kind' ;;
            'gpu realtime') words='--help --json --timing --watch --watch-count' ;;
            'redundancy get') words='--help --json --timing' ;;
            'redundancy set') words='0 1 2 3 4 --help --json --timing' ;;
            'redundancy auto') words='1 2 3 --help --json --timing' ;;
            'policy get') words='--help --json --timing --widened --live' ;;
            'policy set') words='--help --json --timing --ac-soft --ac-min --ac-max --dc-soft --dc-min --dc-max --blade' ;;
            'settings get') words='maximizer unstress-adapter unstress-disk zero-output cpu-caps --help --json --timing' ;;
            'settings set') words='maximizer unstress-adapter unstress-disk zero-output --help --json --timing' ;;
            'meter read') words='--help --json --timing' ;;
            'meter slots') words='--help --json --timing --watch --watch-count' ;;
            'store read') words='--help --json --timing --hex --output' ;;
            'check') words='--help --supplies --redundancy --warning --critical --max-age --skip --json' ;;
            'metrics') words='--help --output' ;;
        esac ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
}
complete -F _pwrmgtctl pwrmgtctl
