// Eight LEDs that breathe one after the other, tuned over a serial line.
//
// A host reaches the register file through the serial line: it sends {write, address[6:0]}; a write
// is followed by its data byte, a read is answered with one byte. The attributes "register",
// "offset", "access" and "initial_value" in regfile are the memory map: they pass through synthesis
// into the netlist, and the handoff is made from there.

module blinky #(
    parameter CLOCK_HZ = 12_000_000,
    parameter BAUD_RATE = 115_200
) (
    input wire clk,
    input wire serial_in,
    output wire serial_out,
    output wire [7:0] led
);
    wire [7:0] rx_data, tx_data, address, write_data, read_data;
    wire rx_valid, tx_start, tx_busy, write_enable;
    wire [7:0] rate, spread, mask, phase, table_index, table_data;
    wire run, invert, table_write;
    wire tick;
    wire [7:0] carrier, read_position, level, load;
    wire [7:0] lit;

    uart_rx #(.DIVISOR(CLOCK_HZ / BAUD_RATE)) receiver (
        .clk(clk), .line(serial_in), .data(rx_data), .valid(rx_valid));

    uart_tx #(.DIVISOR(CLOCK_HZ / BAUD_RATE)) transmitter (
        .clk(clk), .data(tx_data), .start(tx_start), .busy(tx_busy), .line(serial_out));

    bridge host (
        .clk(clk), .rx_data(rx_data), .rx_valid(rx_valid), .tx_data(tx_data), .tx_start(tx_start),
        .tx_busy(tx_busy), .address(address), .write_data(write_data),
        .write_enable(write_enable), .read_data(read_data));

    regfile registers (
        .clk(clk), .address(address), .write_data(write_data), .write_enable(write_enable),
        .read_data(read_data), .run(run), .invert(invert), .rate_out(rate), .spread_out(spread),
        .mask_out(mask), .phase_in(phase), .table_index_out(table_index),
        .table_data_out(table_data), .table_write(table_write));

    prescaler #(.DIVISOR(CLOCK_HZ / 1000)) millisecond (.clk(clk), .tick(tick));

    breather sequencer (
        .clk(clk), .tick(tick), .run(run), .rate(rate), .spread(spread), .phase(phase),
        .carrier(carrier), .position(read_position), .load(load));

    breath_table shape (
        .clk(clk), .write_enable(table_write), .write_address(table_index),
        .write_data(table_data), .read_address(read_position), .read_data(level));

    genvar i;
    generate
        for (i = 0; i < 8; i = i + 1) begin : channel
            pwm modulator (
                .clk(clk), .carrier(carrier), .load(load[i]), .level(level), .lit(lit[i]));
        end
    endgenerate

    assign led = (lit & mask) ^ {8{invert}};
endmodule

// One pulse of one clock every DIVISOR clocks.
module prescaler #(parameter DIVISOR = 12_000) (
    input wire clk,
    output reg tick = 1'b0
);
    reg [$clog2(DIVISOR)-1:0] count = 0;

    always @(posedge clk) begin
        tick <= count == DIVISOR - 1;
        count <= count == DIVISOR - 1 ? 0 : count + 1;
    end
endmodule

// Receives 8 data bits, no parity, one stop bit; "valid" is high for one clock per byte.
module uart_rx #(parameter DIVISOR = 104) (
    input wire clk,
    input wire line,
    output reg [7:0] data = 8'h00,
    output reg valid = 1'b0
);
    reg [1:0] settled = 2'b11;  // the line is asynchronous to clk
    reg [$clog2(DIVISOR)-1:0] count = 0;
    reg [3:0] bits_left = 4'd0;

    always @(posedge clk) begin
        settled <= {settled[0], line};
        valid <= 1'b0;
        if (bits_left == 4'd0) begin
            count <= DIVISOR / 2 - 1;  // look at the middle of each bit
            if (!settled[1])
                bits_left <= 4'd10;
        end else if (count != 0) begin
            count <= count - 1;
        end else begin
            count <= DIVISOR - 1;
            bits_left <= bits_left - 4'd1;
            if (bits_left == 4'd10) begin
                if (settled[1])
                    bits_left <= 4'd0;  // a glitch, not a start bit
            end else if (bits_left == 4'd1) begin
                valid <= settled[1];  // a byte without its stop bit is dropped
            end else begin
                data <= {settled[1], data[7:1]};
            end
        end
    end
endmodule

// Sends 8 data bits, no parity, one stop bit; "start" is ignored while "busy" is high.
module uart_tx #(parameter DIVISOR = 104) (
    input wire clk,
    input wire [7:0] data,
    input wire start,
    output wire busy,
    output wire line
);
    reg [8:0] shift = 9'h1ff;
    reg [3:0] bits_left = 4'd0;
    reg [$clog2(DIVISOR)-1:0] count = 0;

    assign busy = bits_left != 4'd0;
    assign line = shift[0];

    always @(posedge clk) begin
        if (!busy) begin
            count <= DIVISOR - 1;
            if (start) begin
                shift <= {data, 1'b0};
                bits_left <= 4'd10;
            end
        end else if (count != 0) begin
            count <= count - 1;
        end else begin
            count <= DIVISOR - 1;
            shift <= {1'b1, shift[8:1]};
            bits_left <= bits_left - 4'd1;
        end
    end
endmodule

// Turns the bytes of the host into register accesses.
module bridge (
    input wire clk,
    input wire [7:0] rx_data,
    input wire rx_valid,
    output wire [7:0] tx_data,
    output reg tx_start = 1'b0,
    input wire tx_busy,
    output reg [7:0] address = 8'h00,
    output reg [7:0] write_data = 8'h00,
    output reg write_enable = 1'b0,
    input wire [7:0] read_data
);
    reg data_follows = 1'b0;
    reg answer_due = 1'b0;

    assign tx_data = read_data;

    always @(posedge clk) begin
        write_enable <= 1'b0;
        tx_start <= 1'b0;
        if (rx_valid && data_follows) begin
            write_data <= rx_data;
            write_enable <= 1'b1;
            data_follows <= 1'b0;
        end else if (rx_valid) begin
            address <= {1'b0, rx_data[6:0]};
            data_follows <= rx_data[7];
            answer_due <= !rx_data[7];
        end else if (answer_due && !tx_busy) begin
            tx_start <= 1'b1;
            answer_due <= 1'b0;
        end
    end
endmodule

// The register file; its annotated signals are the memory map.
module regfile (
    input wire clk,
    input wire [7:0] address,
    input wire [7:0] write_data,
    input wire write_enable,
    output reg [7:0] read_data,
    output wire run,
    output wire invert,
    output wire [7:0] rate_out,
    output wire [7:0] spread_out,
    output wire [7:0] mask_out,
    input wire [7:0] phase_in,
    output wire [7:0] table_index_out,
    output wire [7:0] table_data_out,
    output wire table_write
);
    localparam ID = 8'h00, CONTROL = 8'h01, RATE = 8'h02, SPREAD = 8'h03, MASK = 8'h04,
               PHASE = 8'h05, TABLE_INDEX = 8'h06, TABLE_DATA = 8'h07;
    localparam ID_VALUE = 8'hb1, CONTROL_INIT = 2'b01, RATE_INIT = 8'd4, SPREAD_INIT = 8'd32,
               MASK_INIT = 8'hff, TABLE_INDEX_INIT = 8'h00;

    (* register = "id", offset = ID, access = "ro", initial_value = ID_VALUE *)
    wire [7:0] id;
    (* register = "control", offset = CONTROL, access = "rw", initial_value = CONTROL_INIT *)
    reg [1:0] control = CONTROL_INIT;
    (* register = "rate", offset = RATE, access = "rw", initial_value = RATE_INIT *)
    reg [7:0] rate = RATE_INIT;
    (* register = "spread", offset = SPREAD, access = "rw", initial_value = SPREAD_INIT *)
    reg [7:0] spread = SPREAD_INIT;
    (* register = "mask", offset = MASK, access = "rw", initial_value = MASK_INIT *)
    reg [7:0] mask = MASK_INIT;
    (* register = "phase", offset = PHASE, access = "ro" *)
    wire [7:0] phase;
    (* register = "table_index", offset = TABLE_INDEX, access = "rw",
       initial_value = TABLE_INDEX_INIT *)
    reg [7:0] table_index = TABLE_INDEX_INIT;
    (* register = "table_data", offset = TABLE_DATA, access = "wo" *)
    wire [7:0] table_data;

    assign id = ID_VALUE;
    assign phase = phase_in;
    assign table_data = write_data;
    assign {invert, run} = control;
    assign rate_out = rate;
    assign spread_out = spread;
    assign mask_out = mask;
    assign table_index_out = table_index;
    assign table_data_out = table_data;
    assign table_write = write_enable && address == TABLE_DATA;

    always @(posedge clk)
        if (write_enable)
            case (address)
                CONTROL: control <= write_data[1:0];
                RATE: rate <= write_data;
                SPREAD: spread <= write_data;
                MASK: mask <= write_data;
                TABLE_INDEX: table_index <= write_data;
                TABLE_DATA: table_index <= table_index + 8'd1;  // fill the table in one run
            endcase

    always @*
        case (address)
            ID: read_data = id;
            CONTROL: read_data = {6'd0, control};
            RATE: read_data = rate;
            SPREAD: read_data = spread;
            MASK: read_data = mask;
            PHASE: read_data = phase;
            TABLE_INDEX: read_data = table_index;
            default: read_data = 8'h00;
        endcase
endmodule

// Moves the phase on by one every "rate" milliseconds and, once per period of the carrier, looks up
// the level of each channel. A rate of 0 counts as 1.
module breather (
    input wire clk,
    input wire tick,
    input wire run,
    input wire [7:0] rate,
    input wire [7:0] spread,
    output reg [7:0] phase = 8'h00,
    output reg [7:0] carrier = 8'h00,
    output reg [7:0] position = 8'h00,
    output reg [7:0] load = 8'h00
);
    reg [7:0] waited = 8'h00;
    reg [7:0] looked_up = 8'h00;

    always @(posedge clk)
        if (tick && run) begin
            if (waited + 9'd1 >= rate) begin  // the rate may have fallen below the wait
                waited <= 8'h00;
                phase <= phase + 8'd1;
            end else begin
                waited <= waited + 8'd1;
            end
        end

    // The table answers one clock after it is asked: "load" trails "position" by that clock.
    always @(posedge clk) begin
        carrier <= carrier + 8'd1;
        position <= carrier == 8'h00 ? phase : position + spread;
        looked_up <= carrier[7:3] == 5'd0 ? 8'h01 << carrier[2:0] : 8'h00;
        load <= looked_up;
    end
endmodule

// One breath in 256 steps: up for 128, down for 128, squared because the eye is not linear.
module breath_table (
    input wire clk,
    input wire write_enable,
    input wire [7:0] write_address,
    input wire [7:0] write_data,
    input wire [7:0] read_address,
    output reg [7:0] read_data
);
    reg [7:0] level [0:255];
    integer i;

    initial
        for (i = 0; i < 128; i = i + 1) begin
            level[i] = (i * i * 255) / (127 * 127);
            level[255 - i] = (i * i * 255) / (127 * 127);
        end

    always @(posedge clk) begin
        if (write_enable)
            level[write_address] <= write_data;
        read_data <= level[read_address];
    end
endmodule

// Lit while the carrier is below the level last loaded.
module pwm (
    input wire clk,
    input wire [7:0] carrier,
    input wire load,
    input wire [7:0] level,
    output reg lit = 1'b0
);
    reg [7:0] limit = 8'h00;

    always @(posedge clk) begin
        if (load)
            limit <= level;
        lit <= carrier < limit;
    end
endmodule
